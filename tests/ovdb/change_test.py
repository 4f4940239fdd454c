"""set, mark, crunch, nextid and create."""

import os
import unittest

from program import ProgramTest, record, run

SITES = [("AAK", "42.6390", "74.4940", "Ala Archa"), ("KIV", "43.9550", "42.6860", "Kislovodsk"),
         ("TIXI", "71.6341", "128.8667")]


def file_of(*rows):
    return b"".join(record("site", row) for row in rows)


class Changes(ProgramTest):
    def site(self):
        return self.path("site").read_bytes()

    def unchanged(self, code, *arguments):
        before = self.site()
        message = self.failure(code, *arguments)
        self.assertEqual(self.site(), before, arguments)
        return message

    def test_set_changes_what_the_expression_keeps(self):
        self.assertEqual(self.output("set", self.table("site"), "--where", "lat < 50", "lat=1.5", "note=a=b c"),
                         "changed 2 records\n")
        self.assertEqual(self.site(), file_of(("AAK", "1.5000", "74.4940", "a=b c"),
                                              ("KIV", "1.5000", "42.6860", "a=b c"), SITES[2]))

    def test_set_to_null(self):
        self.assertEqual(self.output("set", self.table("site"), "note=NULL", "lon=NULL", "--where", "sta=='AAK'"),
                         "changed 1 record\n")
        self.assertEqual(self.site(), file_of(("AAK", "42.6390"), SITES[1], SITES[2]))

    def test_set_of_all_and_of_none(self):
        self.assertEqual(self.output("set", self.table("site"), "--where", "1==1", "lat=-3"), "changed 3 records\n")
        self.assertEqual(self.output("set", self.table("site"), "--where", "lat>0", "lat=2"), "changed 0 records\n")
        self.assertEqual(self.site(), file_of(*[(row[0], "-3.0000", *row[2:]) for row in SITES]))

    def test_set_refuses_before_it_changes_anything(self):
        site = self.table("site")
        for value, reason in [("lat=abc", "field lat: 'abc' is not a number"), ("sta=toolong", "field sta: 'toolong'"),
                              ("note=a\nb", "field note:"), ("nope=1", "set nope")]:
            self.assertIn(reason, self.unchanged(1, "set", site, "--where", "1==1", "lon=1", value))
        self.assertIn("'lat' is no FIELD=VALUE", self.unchanged(2, "set", site, "--where", "1==1", "lat"))
        self.assertIn("--where E is missing", self.unchanged(2, "set", site, "lat=1"))
        self.assertIn("--where", self.unchanged(1, "set", site, "--where", "nope > 1", "lat=1"))
        self.assertIn("FIELD=VALUE", self.unchanged(2, "set", site, "--where", "1==1"))
        self.assertIn("no table is named", self.unchanged(2, "set", self.database, "--where", "1==1", "lat=1"))

    def test_mark_and_crunch(self):
        self.assertEqual(self.output("mark", self.table("site"), "--where", "sta == 'KIV'"), "marked 1 record\n")
        self.assertEqual(self.site(), file_of(SITES[0], (), SITES[2]))
        self.assertEqual(self.output("crunch", self.table("site")), "removed 1 record\n")
        self.assertEqual(self.site(), file_of(SITES[0], SITES[2]))
        self.assertEqual(self.output("crunch", self.table("site")), "removed 0 records\n")
        self.assertIn("--where E is missing", self.unchanged(2, "mark", self.table("site")))

    def test_marked_records_are_records_until_they_are_crunched(self):
        self.output("mark", self.table("site"), "--where", "sta == 'KIV'")
        self.assertEqual(self.output("set", self.table("site"), "--where", "1==1", "lat=1"), "changed 3 records\n")
        self.assertEqual(self.output("crunch", self.table("site")), "removed 0 records\n")

    def test_an_expression_comes_from_a_file(self):
        (self.folder / "which").write_text("sta == 'KIV'\n")
        self.assertEqual(self.output("mark", self.table("site"), "--where", f"@{self.folder / 'which'}"),
                         "marked 1 record\n")

    def test_of_a_table_without_a_file(self):
        for arguments, wanted in [(("crunch", self.table("lonely")), b"removed 0 records\n"),
                                  (("mark", self.table("lonely"), "--where", "flag==1"), b"marked 0 records\n")]:
            done = run(*arguments)
            self.assertEqual((done.returncode, done.stdout), (0, wanted))
            self.assertIn(b"there is no file", done.stderr)
        self.assertFalse(self.path("lonely").exists())

    def test_of_a_table_that_is_refused(self):
        self.path("site").write_bytes(b"not a table\n")
        for arguments in (("set", "--where", "1==1", "lat=1"), ("mark", "--where", "1==1"), ("crunch",)):
            self.unchanged(1, arguments[0], self.table("site"), *arguments[1:])

    def test_nextid_is_beyond_those_in_use(self):
        self.assertEqual(self.output("nextid", self.database, "arid"), "5\n")
        self.assertIn("defines the id 'lat'", self.failure(1, "nextid", self.database, "lat"))
        self.failure(2, "nextid", self.database)

    def test_nextid_is_never_given_twice(self):
        self.assertEqual(self.output("create", self.folder / "new", "--schema", "css3.0"), "")
        numbers = [int(self.output("nextid", self.folder / "new", "orid")) for _ in range(3)]
        self.assertEqual(numbers, [1, 2, 3])


class Create(ProgramTest):
    def test_makes_a_database_that_takes_records(self):
        path = self.folder / "new"
        self.assertEqual(self.output("create", path, "--schema", "tiny", "--description", 'a "new" one: # é'), "")
        self.assertIn('a "new" one: # é', self.output("info", path))
        self.assertEqual(self.output("tables", path, "--no-header"), "")
        self.output("add", f"{path}.site", stdin=file_of(SITES[0]))
        self.assertEqual((self.folder / "new.site").read_bytes(), file_of(SITES[0]))

    def test_overwrites_nothing(self):
        for path in (self.database, self.path("site")):
            before = path.read_bytes()
            self.assertIn("there is a file already", self.failure(1, "create", path, "--schema", "tiny"))
            self.assertEqual(path.read_bytes(), before)

    def test_leaves_nothing_behind_when_it_fails(self):
        before = set(os.listdir(self.folder))
        self.assertIn("nope", self.failure(1, "create", self.folder / "new", "--schema", "nope"))
        self.failure(1, "create", self.folder / "no" / "folder", "--schema", "tiny")
        self.failure(2, "create", self.folder / "new", "--schema", "tiny", "--description", "two\nlines")
        self.assertIn("--schema NAME is missing", self.failure(2, "create", self.folder / "new"))
        self.assertEqual(set(os.listdir(self.folder)), before)


if __name__ == "__main__":
    unittest.main()
