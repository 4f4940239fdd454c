"""Text, CSV, TSV and JSON, read by readers that share nothing with what wrote them."""

import csv
import io
import json
import unittest

from program import DEMO, ProgramTest, field, record, run

NOTES = ['plain', 'a,b', 'say "hi"', '"', '""', "tab\there", "carriage\rreturn", " leads", "'quoted'", "semi;colon",
         "\\back\\", "ÅØ ü", "", "-", "{json}", "a\u2028b", "\x01\x1f\x7f"]


class Formats(ProgramTest):
    def setUp(self):
        super().setUp()
        self.rows = [("1", "2018038", str(i + 1), "1.5000", "0.00000", note) for i, note in enumerate(NOTES)]
        self.write("kinds", *self.rows)

    def select(self, table, *options):
        return self.output("select", self.table(table), *options)

    def test_text_is_the_table(self):
        for table in ("site", "arrival", "kinds"):
            result = run("select", self.table(table))
            self.assertEqual((result.returncode, result.stdout), (0, self.path(table).read_bytes()))
            self.assertEqual(run("select", self.table(table), "--format", "text").stdout, result.stdout)

    def test_a_line_feed_within_a_record_is_an_error(self):
        self.write("kinds", *self.rows, ("1", "2018038", "99", "1.5000", "0.00000", "line\nfeed"))
        for form in ("text", "csv", "tsv", "json"):
            result = run("select", self.table("kinds"), "--format", form)
            self.assertEqual(result.returncode, 1)
            self.assertIn(f"record {len(self.rows)}, ".encode(), result.stderr)
            self.assertIn(b"has a line feed at byte ", result.stderr)

    def test_text_has_names_when_asked(self):
        lines = self.select("arrival", "--header", "--limit", "1").splitlines()
        self.assertEqual(lines, ["sta                 time     arid phase   ", "KIV            100.50000        1 P       "])

    def test_text_of_some_fields_keeps_their_width(self):
        self.assertEqual(self.select("site", "--fields", "lat,sta"),
                         "  42.6390 AAK   \n  43.9550 KIV   \n  71.6341 TIXI  \n")

    def test_csv_and_tsv_are_read_back(self):
        for name, dialect in (("csv", "excel"), ("tsv", "excel-tab")):
            result = run("select", self.table("kinds"), "--format", name)
            self.assertEqual((result.returncode, result.stderr), (0, b""))
            rows = list(csv.reader(io.StringIO(result.stdout.decode(), newline=""), dialect, strict=True))
            self.assertEqual(rows[0], ["flag", "jdate", "orid", "lat", "time", "note"])
            self.assertEqual(rows[1:], [list(row[:-1]) + [row[-1].strip(" \t")] for row in self.rows])
            headless = run("select", self.table("kinds"), "--format", name, "--no-header")
            self.assertEqual(headless.stdout, result.stdout.split(b"\n", 1)[1])

    def test_csv_of_a_single_field_has_no_line_that_a_reader_would_skip(self):
        text = run("select", self.table("kinds"), "--format", "csv", "--fields", "note").stdout.decode()
        rows = list(csv.reader(io.StringIO(text, newline=""), strict=True))
        self.assertEqual([row[0] for row in rows[1:]], [note.strip(" \t") for note in NOTES])

    def test_csv_quotes_nothing_without_need(self):
        self.assertEqual(self.select("site", "--format", "csv"),
                         "sta,lat,lon,note\nAAK,42.6390,74.4940,Ala Archa\nKIV,43.9550,42.6860,Kislovodsk\n"
                         "TIXI,71.6341,128.8667,-\n")

    def test_json_is_read_back(self):
        objects = json.loads(self.select("kinds", "--format", "json"))
        self.assertEqual(list(objects[0]), ["flag", "jdate", "orid", "lat", "time", "note"])
        self.assertEqual([row["note"] for row in objects],
                         [None if note == "-" else note.rstrip(" ") for note in NOTES])
        self.assertEqual({(row["flag"], row["jdate"], row["lat"], row["time"]) for row in objects},
                         {(1, 2018038, 1.5, 0.0)})
        self.assertEqual([row["orid"] for row in objects], list(range(1, len(NOTES) + 1)))

    def test_json_has_one_object_a_line(self):
        lines = self.select("kinds", "--format", "json").split("\n")
        self.assertEqual((lines[0], lines[-2:]), ("[", ["]", ""]))
        for line in lines[1:-2]:
            self.assertIsInstance(json.loads(line.rstrip(",")), dict)

    def test_json_numbers_keep_their_digits(self):
        self.write("kinds", ("0", "2018038", "7", "1.5000", "1517363399.65000", "x"))
        self.assertEqual(self.select("kinds", "--format", "json"),
                         '[\n{"flag":0,"jdate":2018038,"orid":7,"lat":1.5000,"time":1517363399.65000,"note":"x"}\n]\n')

    def test_json_numbers_from_elsewhere_are_numbers(self):
        forms = {"+1.5": 1.5, ".25": 0.25, "-.5": -0.5, "5.": 5.0, "007": 7.0, "1e3": 1000.0, "-0": 0.0, "1E+2": 100.0,
                 "12": 12.0}
        raw = b"".join(record("kinds", ("1", "+2018038", "007", form, "1")) for form in forms)
        self.path("kinds").write_bytes(raw)
        objects = json.loads(self.select("kinds", "--format", "json"))
        self.assertEqual([row["lat"] for row in objects], list(forms.values()))
        self.assertEqual({(row["jdate"], row["orid"]) for row in objects}, {(2018038, 7)})

    def test_json_nulls(self):
        self.write("kinds", (None, None, None, None, None, None), ("-1", "-1", "-01", "-999", "-9999999999.999", "-"))
        objects = json.loads(self.select("kinds", "--format", "json"))
        self.assertEqual([set(row.values()) for row in objects], [{None}, {None}])

    def test_json_times_in_words_are_seconds(self):
        self.write("kinds", ("1", "-1", "1", "1", "2011/01/31"), ("1", "-1", "1", "1", "2014-03-03T110706"))
        objects = json.loads(self.select("kinds", "--format", "json"))
        self.assertEqual([row["time"] for row in objects], [1296432000, 1393844826])

    def test_json_of_what_is_no_number_is_null_and_is_counted(self):
        self.write("kinds", ("7", "12.5", "many", "inf", "soon"), ("1", "", "1", "nan", "99"))
        result = run("select", self.table("kinds"), "--format", "json")
        objects = json.loads(result.stdout)
        self.assertEqual(objects[0], dict.fromkeys(objects[0]))
        self.assertEqual(objects[1], {"flag": 1, "jdate": None, "orid": 1, "lat": None, "time": 99, "note": None})
        notes = result.stderr.decode()
        self.assertEqual(result.returncode, 0)
        self.assertIn("ovdb: note: field lat: 2 values are no numbers and are written as null\n", notes)
        self.assertIn("ovdb: note: field jdate: 2 values are no whole numbers", notes)
        self.assertIn("ovdb: note: field time: 1 values are no times", notes)

    def test_json_of_bytes_that_are_no_utf8(self):
        wrong = [b"caf\xe9", b"\xff\xfe", b"\xc0\xaf", b"\xed\xa0\x80x", b"\xf4\x90\x80\x80", b"ok \xe2\x82"]
        self.write("kinds", *[("1", "1", "1", "1", "1", note) for note in wrong])
        objects = json.loads(run("select", self.table("kinds"), "--format", "json").stdout.decode("utf-8"))
        for row in objects:
            self.assertIn("\ufffd", row["note"])
        self.assertEqual(objects[0]["note"], "caf\ufffd")
        # CSV has the bytes as they are.
        text = run("select", self.table("kinds"), "--format", "csv", "--fields", "note", "--no-header").stdout
        self.assertEqual(text.split(b"\n")[0], b"caf\xe9")

    def test_json_of_bundles(self):
        objects = json.loads(self.select("arrival", "--group", "sta", "--format", "json"))
        self.assertEqual(objects[:2], [{"sta": "AAK", "bundle": "0-1"}, {"sta": "KIV", "bundle": "1-3"}])

    def test_fields_of_one_name_keep_apart(self):
        joined = ["--join", "site"]
        objects = json.loads(self.select("arrival", *joined, "--format", "json"))
        self.assertEqual(list(objects[0]), ["sta", "time", "arid", "phase", "site.sta", "lat", "lon", "note"])
        rows = list(csv.DictReader(io.StringIO(self.select("arrival", *joined, "--format", "csv"))))
        self.assertEqual(list(rows[0]), list(objects[0]))
        chosen = self.select("arrival", *joined, "--fields", "site.sta,arrival.sta,arid", "--format", "csv")
        self.assertTrue(chosen.startswith("site.sta,arrival.sta,arid\nKIV,KIV,1\n"), chosen)

    def test_of_the_demo_agree(self):
        for table in ("origin", "arrival", "site", "remark"):
            as_json = json.loads(self.output("select", f"{DEMO}.{table}", "--format", "json"))
            as_csv = list(csv.DictReader(io.StringIO(self.output("select", f"{DEMO}.{table}", "--format", "csv"))))
            self.assertEqual(len(as_json), len(as_csv))
            self.assertGreater(len(as_json), 100)
            for one, other in zip(as_json, as_csv):
                self.assertEqual(list(one), list(other))
                for name, value in one.items():
                    if isinstance(value, str):
                        self.assertEqual(value.strip(), other[name])
                    elif value is not None:
                        self.assertEqual(value, float(other[name]))


if __name__ == "__main__":
    assert field("sta", "A") == b"A     "
    unittest.main()
