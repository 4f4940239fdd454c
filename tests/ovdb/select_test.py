"""Every operation, and their order."""

import unittest

from program import ProgramTest, run


class Operations(ProgramTest):
    def rows(self, table, *options):
        """Rows as tuples of trimmed texts."""
        text = self.output("select", self.table(table), "--format", "tsv", "--no-header", *options)
        return [tuple(line.split("\t")) for line in text.splitlines()]

    def column(self, table, *options):
        return [row[0] for row in self.rows(table, *options)]

    def test_none_gives_the_table(self):
        self.assertEqual(self.rows("site"), [("AAK", "42.6390", "74.4940", "Ala Archa"),
                                             ("KIV", "43.9550", "42.6860", "Kislovodsk"),
                                             ("TIXI", "71.6341", "128.8667", "-")])

    def test_subset(self):
        self.assertEqual(self.column("site", "--subset", "lat > 43 && sta =~ 'I'", "--fields", "sta"), ["KIV", "TIXI"])
        self.assertEqual(self.rows("site", "--subset", "lat > 80"), [])

    def test_sort(self):
        self.assertEqual(self.column("arrival", "--sort", "time,sta", "--fields", "arid"), ["3", "2", "1", "4"])
        self.assertEqual(self.column("arrival", "--sort", "time, sta", "--reverse", "--fields", "arid"),
                         ["4", "1", "2", "3"])
        self.assertEqual(self.column("arrival", "--sort", "phase", "--unique", "--fields", "arid"), ["1", "2"])
        self.assertEqual(self.column("arrival", "--sort", "phase", "--unique", "--reverse", "--fields", "arid"),
                         ["2", "1"])

    def test_join(self):
        self.assertEqual(self.rows("arrival", "--join", "site", "--fields", "arid,lat"),
                         [("1", "43.9550"), ("2", "42.6390"), ("3", "43.9550")])

    def test_outer_join(self):
        self.assertEqual(self.rows("arrival", "--outer-join", "site", "--fields", "arid,site.sta,lat"),
                         [("1", "KIV", "43.9550"), ("2", "AAK", "42.6390"), ("3", "KIV", "43.9550"),
                          ("4", "-", "-999.0000")])

    def test_left_join_puts_the_named_table_first(self):
        self.assertEqual(self.rows("arrival", "--left-join", "site", "--fields", "sta,arid"),
                         [("AAK", "2"), ("KIV", "1"), ("KIV", "3")])
        header = self.output("select", self.table("arrival"), "--left-join", "site", "--format", "csv").split("\n")[0]
        self.assertEqual(header, "sta,lat,lon,note,arrival.sta,time,arid,phase")

    def test_no_join(self):
        self.assertEqual(self.column("arrival", "--no-join", "site", "--fields", "arid"), ["4"])
        self.assertEqual(self.column("site", "--no-join", "arrival", "--fields", "sta"), ["TIXI"])

    def test_theta_join(self):
        pairs = self.rows("arrival", "--theta-join", "site", "arrival.sta == site.sta && lat > 43",
                          "--fields", "arid,site.sta")
        self.assertEqual(pairs, [("1", "KIV"), ("3", "KIV")])

    def test_group_and_ungroup(self):
        self.assertEqual(self.rows("arrival", "--group", "sta,phase"),
                         [("AAK", "S", "0-1"), ("KIV", "P", "1-3"), ("XXX", "P", "3-4")])
        self.assertEqual(self.column("arrival", "--group", "sta", "--subset", "sta != 'AAK'", "--ungroup",
                                     "--fields", "arid"), ["1", "3", "4"])

    def test_sever_and_separate(self):
        joined = ["--join", "site", "--join", "assoc"]
        self.assertEqual(self.rows("arrival", *joined, "--sever", "assoc", "--sever", "arrival", "--fields", "sta"),
                         [("KIV",), ("AAK",)])
        self.assertEqual(self.rows("arrival", "--join", "site", "--separate", "site", "--fields", "sta,note"),
                         [("AAK", "Ala Archa"), ("KIV", "Kislovodsk")])

    def test_are_applied_in_the_order_given(self):
        # The subset sees what the join has made, and the other way round it does not.
        self.assertEqual(self.column("arrival", "--join", "site", "--subset", "lat > 43", "--fields", "arid"),
                         ["1", "3"])
        self.assertIn("unknown field `lat`", self.failure(1, "select", self.table("arrival"), "--subset", "lat > 43",
                                                          "--join", "site"))
        # Unique before or after a subset gives other rows.
        self.assertEqual(self.column("arrival", "--sort", "phase", "--unique", "--subset", "arid > 1",
                                     "--fields", "arid"), ["2"])
        self.assertEqual(self.column("arrival", "--subset", "arid > 1", "--sort", "phase", "--unique",
                                     "--fields", "arid"), ["3", "2"])
        # The same operation several times.
        self.assertEqual(self.column("arrival", "--sort", "arid", "--reverse", "--sort", "phase", "--fields", "arid"),
                         ["4", "3", "1", "2"])

    def test_options_of_output_can_stand_anywhere(self):
        self.assertEqual(self.column("arrival", "--limit", "1", "--fields", "arid", "--sort", "arid", "--reverse"),
                         ["4"])

    def test_limit(self):
        self.assertEqual(self.column("arrival", "--limit", "2", "--fields", "arid"), ["1", "2"])
        self.assertEqual(self.column("arrival", "--limit", "99", "--fields", "arid"), ["1", "2", "3", "4"])
        self.assertEqual(self.column("arrival", "--limit", "0"), [])
        self.assertEqual(self.output("select", self.table("site"), "--limit", "0", "--format", "json"), "[]\n")
        self.assertEqual(self.output("select", self.table("site"), "--limit", "0", "--format", "csv"),
                         "sta,lat,lon,note\n")

    def test_count(self):
        self.assertEqual(self.output("select", self.table("arrival"), "--count"), "4\n")
        self.assertEqual(self.output("select", self.table("arrival"), "--join", "site", "--count"), "3\n")
        self.assertEqual(self.output("select", self.table("arrival"), "--count", "--limit", "2"), "2\n")
        self.assertEqual(self.output("select", self.table("arrival"), "--count", "--format", "json"), "4\n")

    def test_a_table_without_a_file_is_empty_and_that_is_noted(self):
        for operations, rows in ([], b""), (["--no-join", "kinds", "--fields", "arid"], b"1\n2\n3\n4\n"):
            table = "arrival" if operations else "kinds"
            result = run("select", self.table(table), *operations, "--format", "csv", "--no-header")
            self.assertEqual((result.returncode, result.stdout), (0, rows))
            self.assertIn(f"there is no file {self.path('kinds')}; the table counts as empty", result.stderr.decode())

    def test_a_table_whose_file_is_refused_is_a_failure(self):
        self.path("site").write_text("not a record\n")
        for arguments in (["select", self.table("site"), "--count"],
                          ["select", self.table("arrival"), "--join", "site"]):
            self.assertIn("a record is 12 bytes wide where table site of schema tiny expects 51",
                          self.failure(1, *arguments))

    def test_an_expression_can_come_from_a_file(self):
        (self.folder / "expression").write_text("lat > 43 &&\n  sta != 'TIXI'\n")
        self.assertEqual(self.column("site", "--subset", f"@{self.folder}/expression", "--fields", "sta"), ["KIV"])
        result = run("select", self.table("arrival"), "--theta-join", "site", "@-", "--count",
                     stdin=b"arrival.sta == site.sta")
        self.assertEqual((result.returncode, result.stdout), (0, b"3\n"))
        self.assertIn("no/such/file: cannot read the expression: No such file or directory",
                      self.failure(1, "select", self.table("site"), "--subset", "@no/such/file"))


if __name__ == "__main__":
    unittest.main()
