"""Records from lines of text: forms, columns by name, and what a bad line gets."""

import unittest

from program import ProgramTest, record, run

FORMATS = ("text", "csv", "tsv", "json")


class Add(ProgramTest):
    def add(self, text, *options, table="site"):
        return self.output("add", self.table(table), *options, stdin=text.encode())

    def refused(self, text, *options, code=1, table="site"):
        return self.failure(code, "add", self.table(table), *options, stdin=text.encode())

    def last(self, count=1, table="site"):
        return self.path(table).read_bytes().splitlines(keepends=True)[-count:]

    def test_every_form_that_select_writes_comes_back(self):
        for table in ("site", "arrival", "assoc"):
            before = self.path(table).read_bytes()
            written = {form: run("select", self.table(table), "--format", form).stdout for form in FORMATS}
            for form, rows in written.items():
                self.assertEqual(self.output("add", self.table(table), "--format", form, stdin=rows),
                                 "added 3 records\n" if table != "arrival" else "added 4 records\n")
            self.assertEqual(self.path(table).read_bytes(), before * 5, table)

    def test_columns_go_by_name(self):
        wanted = [record("site", ("NEW", "1.5000", None, "a, \"b\""))]
        for text, options in [
            ('note,sta,lat\n"a, ""b""",NEW,1.5\n', ["--format", "csv"]),
            ('\ufeffnote,site.sta,lat\r\n"a, ""b""",NEW,1.5\r\n', ["--format", "csv"]),
            ('"a, ""b""",NEW,1.5', ["--format", "csv", "--no-header", "--fields", "note,sta,lat"]),
            ('x,y,z\n"a, ""b""",NEW,1.5', ["--format", "csv", "--fields", "note,sta,lat"]),
            ('note\tlat\tsta\tlon\n"a, ""b"""\t1.5\tNEW\t\n', ["--format", "tsv"]),
            ('{"note":"a, \\"b\\"","lat":1.50,"sta":"NEW","lon":null}\n', ["--format", "json"]),
            ('lat       sta    note\n      1.5 NEW    a, "b"\n', ["--header"]),
            ('1.5       NEW    a, "b"' + " " * 40 + "\n", ["--fields", "lat,sta,note"]),
        ]:
            self.assertEqual(self.add(text, *options), "added 1 record\n", text)
            self.assertEqual(self.last(), wanted, text)

    def test_types(self):
        self.write("kinds")
        self.add('{"flag":true,"jdate":2011031,"orid":7,"time":"2011/01/31","note":"é"}\n'
                 '\n{"flag":0,"orid":8,"time":-0.5,"lat":1e1}\n', "--format", "json", table="kinds")
        self.assertEqual(self.last(2, "kinds"),
                         [record("kinds", ("1", "2011031", "7", None, "1296432000.00000", "é".encode())),
                          record("kinds", ("0", None, "8", "10.0000", "-0.50000"))])

    def test_checked_leaves_out_keys_that_are_there(self):
        text = "sta,lat\nKIV,1\nNEW,2\nNEW,3\n"
        self.assertEqual(self.add(text, "--checked", "--format", "csv"), "added 1 record, left out 2 records\n")
        self.assertEqual(self.last(), [record("site", ("NEW", "2.0000"))])

    def test_a_table_without_a_file_gets_one(self):
        self.assertEqual(self.add("flag,note\n1,x\n", "--format", "csv", table="lonely"), "added 1 record\n")
        self.assertEqual(self.path("lonely").read_bytes(), record("lonely", ("1", "x")))

    def test_nothing_is_added_of_nothing(self):
        before = self.path("site").read_bytes()
        self.assertEqual(self.add(""), "added 0 records\n")
        self.assertEqual(self.add("sta\n", "--format", "csv"), "added 0 records\n")
        self.assertEqual(self.add("[\n]\n", "--format", "json"), "added 0 records\n")
        self.assertIn("line 1: the line of names is missing", self.refused("", "--format", "csv"))
        self.assertEqual(self.path("site").read_bytes(), before)

    def test_a_bad_line_ends_it_and_says_where(self):
        good = {"csv": "sta,lat\nA,1\n", "json": '{"sta":"A","lat":1}\n', "tsv": "sta\tlat\nA\t1\n"}
        for form, bad, line, reason in [
            ("csv", "B,abc\n", 3, "field lat: 'abc' is not a number"),
            ("csv", "toolong,1\n", 3, "field sta: 'toolong'"),
            ("csv", "B\n", 3, "the number of values is 1, 2 is expected"),
            ("csv", 'B,"1\n2\n', 3, "a quote is not closed"),
            ("csv", 'B,"1"2\n', 3, "something stands behind the end of a quoted value"),
            ("csv", 'B,1"2\n', 3, "a quote stands within a value that is not quoted"),
            ("csv", '"B\nC",1\n', 3, "field sta:"),
            ("csv", "B\0,1\n", 3, "field sta: a zero byte"),
            ("csv", ",\n", 3, "null"),
            ("tsv", "B\t1\t2\n", 3, "the number of values is 3, 2 is expected"),
            ("json", '{"sta":"B","latt":1}\n', 2, "the table has no field 'latt'; did you mean lat?"),
            ("json", '{"sta":"B","sta":"C"}\n', 2, "field sta: it stands there twice"),
            ("json", '{"sta":["B"]}\n', 2, "field sta: an array is no value"),
            ("json", '{"sta":{"B":1}}\n', 2, "field sta: an object is no value"),
            ("json", '{"sta":true}\n', 2, "field sta: true is no value of it"),
            ("json", '{"sta":"B"\n', 2, "this is no JSON"),
            ("json", "[1]\n", 2, "an object is expected"),
        ]:
            self.setUp()
            before = self.path("site").read_bytes()
            message = self.refused(good[form] + bad + good[form].splitlines()[-1] + "\n", "--format", form)
            self.assertIn(f"standard input: line {line}: ", message)
            self.assertIn(reason, message)
            self.assertIn("\nadded 1 record before that\n", message)
            self.assertEqual(self.path("site").read_bytes(), before + record("site", ("A", "1.0000")), bad)

    def test_bytes_that_are_no_utf8(self):
        for form, text in (("csv", b"sta\n\xff\n"), ("json", b'{"sta":"\xff"}\n')):
            message = self.failure(1, "add", self.table("site"), "--format", form, stdin=text)
            self.assertIn("added 0 records before that", message)

    def test_wide_lines_that_do_not_fit(self):
        line = record("site", ("B", "1.0000", "2.0000", "x")).decode()
        for bad, reason in [(line[:20] + "\n", "the line has 20 bytes, its fields have 51"),
                            (line[:-1] + "y\n", "the line has 52 bytes, its fields have 51"),
                            (line[:6] + "x" + line[7:], "field lat: no blank stands before it")]:
            message = self.refused(line + bad)
            self.assertIn(f"line 2: {reason}", message)

    def test_names_that_are_wrong(self):
        self.assertIn("line 1: the table has no field 'stat'", self.refused("stat\nA\n", "--format", "csv"))
        self.assertIn("line 1: the field sta is named twice", self.refused("sta,sta\nA,B\n", "--format", "csv"))
        self.assertIn("--fields nope", self.refused("A\n", "--fields", "nope"))
        self.refused("{}", "--format", "json", "--fields", "sta", code=2)
        self.assertIn("no table is named", self.failure(2, "add", self.database))

    def test_a_table_that_can_not_be_used(self):
        self.path("site").write_bytes(b"not a table\n")
        self.refused("sta\nA\n", "--format", "csv")
        self.assertEqual(self.path("site").read_bytes(), b"not a table\n")


if __name__ == "__main__":
    unittest.main()
