"""Input that is wrong, hostile or too much: an error with its reason, in little time, and nothing written."""

import time
import unittest

from program import ProgramTest, run


class BadInput(ProgramTest):
    def failed(self, *arguments, **options):
        """The message of a select that fails within seconds and writes nothing."""
        begin = time.monotonic()
        result = run("select", *arguments, timeout=30, **options)
        self.assertLess(time.monotonic() - begin, 10)
        self.assertEqual((result.returncode, result.stdout), (1, b""), result.stderr[:500])
        message = result.stderr.decode()
        self.assertTrue(message.startswith("ovdb: "), message)
        self.assertLess(len(message), 3000)
        return message

    def subset(self, expression):
        return self.failed(self.table("arrival"), "--subset", expression)

    def subset_from_file(self, expression):
        (self.folder / "expression").write_text(expression)
        return self.subset(f"@{self.folder}/expression")

    def test_databases_and_tables_that_do_not_exist(self):
        self.assertIn("no/such.site: no such database: there is no folder no", self.failed("no/such.site"))
        self.assertIn("'sit'; near it: site", self.failed(self.table("sit")))
        self.assertIn("no table 'sites' in", self.failed(self.table("arrival"), "--join", "sites"))
        self.assertIn("'ovdb tables --all", self.failed(self.table("arrival"), "--join", "sites"))

    def test_fields_that_do_not_exist(self):
        message = self.subset("arrid > 3")
        self.assertIn("unknown field `arrid`; near it: arid", message)
        self.assertIn("\n  arrid > 3\n  ^^^^^\n", message)
        for option in ("--sort", "--group"):
            self.assertIn("no field 'lat' in table arrival", self.failed(self.table("arrival"), option, "arid,lat"))
        self.assertIn("no field 'nosuch'", self.failed(self.table("arrival"), "--fields", "arid,nosuch"))
        self.assertIn("no field 'nosuch'", self.failed(self.table("arrival"), "--fields", "nosuch", "--format", "json"))

    def test_types_that_do_not_fit(self):
        self.assertIn("^", self.subset("arid =~ 3"))
        self.assertIn("^", self.subset("sqrt(1, 2) > 3"))
        self.assertIn("^", self.subset("arid + (phase == 'P' ? 'a' : 'b') > 2"))

    def test_quotes_and_brackets_that_do_not_match(self):
        self.assertIn("does not end", self.subset("phase == 'P"))
        self.assertIn("^", self.subset("(arid > 3"))
        self.assertIn("^", self.subset("arid > 3)"))
        self.assertIn("^", self.subset(""))

    def test_an_expression_of_ten_megabytes(self):
        self.assertIn("--subset: ", self.subset_from_file("arid > 1 || " * (10 * 1024 * 1024 // 12) + "arid > 2"))
        self.assertIn("--subset: ", self.subset_from_file("'" + "x" * (10 * 1024 * 1024)))

    def test_nested_brackets(self):
        self.assertIn("--subset: ", self.subset("(" * 100000 + "1" + ")" * 20000))
        self.assertIn("--subset: ", self.subset_from_file("(" * 100000 + "arid > 1" + ")" * 100000))

    def test_a_regular_expression_made_to_blow_up(self):
        self.write("kinds", *[("1", "1", "1", "1", "1", "a" * 23 + "!")] * 20000)
        begin = time.monotonic()
        count = self.output("select", self.table("kinds"), "--subset", "note =~ '^(a+)+$'", "--count")
        self.assertEqual(count, "0\n")
        self.assertLess(time.monotonic() - begin, 10)
        self.assertIn("--subset: ", self.subset("phase =~ '(((a{1000}){1000}){1000}){1000}'"))
        self.assertIn("--subset: ", self.subset("phase =~ '(unclosed'"))

    def test_files_that_hold_no_expression(self):
        (self.folder / "expression").write_bytes(b"arid > 1\0")
        self.assertIn("holds a zero byte", self.subset(f"@{self.folder}/expression"))
        self.assertIn("Is a directory", self.subset(f"@{self.folder}"))

    def test_joins_without_keys(self):
        message = self.failed(self.table("arrival"), "--join", "lonely")
        self.assertIn("there are no keys by which arrival joins lonely", message)
        self.assertIn("'ovdb info DB.TABLE' lists what a table can be joined to", message)
        self.assertIn("arrival", self.failed(self.table("arrival"), "--join", "arrival"))

    def test_operations_that_do_not_fit_the_table(self):
        self.assertIn("is not grouped", self.failed(self.table("arrival"), "--ungroup"))
        self.assertIn("no table 'site' in", self.failed(self.table("arrival"), "--sever", "site"))
        self.assertIn("no table 'site' in", self.failed(self.table("arrival"), "--separate", "site"))

    def test_a_join_that_would_not_fit_into_memory(self):
        self.path("kinds").write_bytes(self.many_kinds(300000))
        self.path("lonely").write_bytes(b"".join(b" 1 %-24d\n" % i for i in range(300000)))
        message = self.failed(self.table("kinds"), "--theta-join", "lonely", "1 == 1")
        self.assertIn("out of memory", message)

    @staticmethod
    def many_kinds(count):
        return b"".join(b" 1  2018001 %8d %9.4f %17.5f %-24s\n" % (i, i % 90, i, b"x") for i in range(count))


if __name__ == "__main__":
    unittest.main()
