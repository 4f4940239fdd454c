"""Saved views: by name beside the database, and by standard input."""

import unittest
import zlib

from program import ProgramTest, run


class SavedView(ProgramTest):
    def text(self, *rows):
        """The text of a view of `site`, made without the library."""
        fields = ", ".join(f'"site.{name}"' for name in ("sta", "lat", "lon", "note"))
        text = (f'saved-view: 1\ndatabase: "{self.database}"\nschema: "tiny"\nfields: [{fields}]\nparts:\n'
                f'  - table: "site"\n    records: 3\n  - view: "some"\n    rows: {len(rows)}\n    members: [0]\n'
                '    creation:\n      - "dbopen site"\n---\n' + "".join(f"{row}\n" for row in rows))
        return text + f"end {zlib.crc32(text.encode()):08x}\n"

    def select(self, text, *options):
        return run("select", "-", *options, stdin=text.encode())

    def test_comes_by_standard_input(self):
        done = self.select(self.text(2, 0), "--fields", "sta", "--format", "csv")
        self.assertEqual(done.stdout, b"sta\nTIXI\nAAK\n")
        self.assertEqual(done.returncode, 0)
        self.assertIn(b"table site has changed", done.stderr)  # the head above says nothing of its file

    def test_is_a_table_of_its_database(self):
        with open(self.path("some"), "w") as file:
            file.write(self.text(1))
        done = run("select", self.table("some"), "--fields", "sta", "--format", "csv")
        self.assertEqual(done.stdout, b"sta\nKIV\n")

    def test_that_was_damaged_is_refused(self):
        done = self.select(self.text(2, 0).replace("\n2\n", "\n1\n"))
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stdout, b"")
        self.assertIn(b"the checksum is not that of the text", done.stderr)
        self.assertEqual(self.select("").returncode, 1)


if __name__ == "__main__":
    unittest.main()
