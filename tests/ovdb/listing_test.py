"""info, tables, fields, expr."""

import csv
import io
import json
import os
import unittest

from program import ATTRIBUTES, RELATIONS, SOURCE, ProgramTest, environment, run, schema_text


class Listings(ProgramTest):
    def test_tables_with_their_records_and_bytes(self):
        size = {name: os.path.getsize(self.path(name)) for name in ("site", "arrival", "assoc")}
        self.assertEqual([line.split(None, 3) for line in self.lines("tables", self.database)],
                         [["table", "records", "bytes", "description"],
                          ["site", "3", str(size["site"]), "the table site"],
                          ["arrival", "4", str(size["arrival"]), "the table arrival"],
                          ["assoc", "3", str(size["assoc"]), "the table assoc"]])
        self.assertEqual([line.split()[0] for line in self.lines("tables", "--all", "--no-header", self.database)],
                         list(RELATIONS))

    def test_fields_are_those_of_the_schema(self):
        rows = list(csv.DictReader(io.StringIO(self.output("fields", self.database, "--format", "csv"))))
        expected = []
        for table, (fields, _) in RELATIONS.items():
            for name in fields:
                kind, width, form, null = ATTRIBUTES[name]
                expected.append({"table": table, "field": name, "type": kind, "width": str(width), "format": form,
                                 "null": null, "units": f"units of {name}", "description": f"what {name} is"})
        self.assertEqual(rows, expected)
        of_one = json.loads(self.output("fields", self.table("kinds"), "--format", "json"))
        self.assertEqual([row["field"] for row in of_one], RELATIONS["kinds"][0])
        self.assertEqual(of_one[0]["width"], 2)

    def test_formats_say_the_same(self):
        as_json = json.loads(self.output("tables", self.database, "--format", "json"))
        for name, delimiter in (("csv", ","), ("tsv", "\t")):
            text = self.output("tables", self.database, "--format", name)
            rows = list(csv.DictReader(io.StringIO(text), delimiter=delimiter))
            self.assertEqual(rows, [{key: str(value) for key, value in row.items()} for row in as_json])
            headless = self.output("tables", self.database, "--format", name, "--no-header")
            self.assertEqual(headless, text.split("\n", 1)[1])

    def test_descriptions_are_quoted_where_needed(self):
        schema = schema_text().replace("description: the table site", "description: 'a, \"b\"'")
        (self.folder / "tiny.yaml").write_text(schema)
        rows = list(csv.reader(io.StringIO(self.output("tables", self.database, "--format", "csv"))))
        self.assertEqual(rows[1][3], 'a, "b"')

    def test_a_table_that_is_refused_is_told(self):
        self.path("site").write_text("not a record\n")
        result = run("tables", self.database)
        self.assertEqual(result.returncode, 0)
        self.assertRegex(result.stdout.decode(), r"\nsite +0 ")
        self.assertIn("ovdb: note: ", result.stderr.decode())
        self.assertIn("a record is 12 bytes wide", result.stderr.decode())

    def test_info_of_a_database(self):
        text = self.output("info", self.database)
        for expected in (f"path           {self.database}\n", "description    made by a test\n", "locks          none\n",
                         "schema         tiny\n", "a schema for tests\n", "\narrival        4"):
            self.assertIn(expected, text)
        self.assertNotIn("\nkinds", text)

    def test_info_of_a_table(self):
        text = self.output("info", self.table("arrival"))
        for expected in ("description    the table arrival\n", f"file           {self.path('arrival')}\n",
                         "records        4\n", "primary key    sta, time\n", "alternate key  arid\n",
                         "defines        arid\n", "joins          site, assoc, kinds\n", "record size    43 bytes\n"):
            self.assertIn(expected, text)
        self.assertIn("(not there)\n", self.output("info", self.table("kinds")))


class Schemas(ProgramTest):
    def test_are_found_where_the_environment_says(self):
        other = self.folder / "schemas"
        other.mkdir()
        (self.folder / "tiny.yaml").rename(other / "tiny.yaml")
        message = self.failure(1, "tables", self.database)
        self.assertIn("cannot open the database: ", message)
        self.assertIn("tiny", message)
        found = self.lines("tables", self.database, env=environment(ORVANE_SCHEMA_PATH=str(other)))
        self.assertEqual(len(found), 4)

    def test_databases_without_a_descriptor_have_the_schema_of_the_environment(self):
        self.database.unlink()
        settings = environment(ORVANE_SCHEMA_PATH=str(self.folder), ORVANE_SCHEMA="tiny")
        self.assertEqual(self.output("select", self.table("site"), "--count", env=settings), "3\n")

    def test_of_the_public_standard_come_with_the_program(self):
        self.assertIn("origins: where and when", self.output("tables", SOURCE / "demo/quakes"))


class Functions(ProgramTest):
    def test_are_listed(self):
        text = self.output("expr", "--help")
        self.assertEqual(text, self.output("expr"))
        for signature in ("isnull(", "distance(lat1: real, lon1: real, lat2: real, lon2: real) → real", "substr("):
            self.assertIn(f"\n  {signature}", text)

    def test_are_explained(self):
        text = self.output("expr", "--help", "distance")
        self.assertTrue(text.startswith("distance(lat1: real"), text)
        self.assertIn("degrees", text)
        self.assertEqual(text, self.output("expr", "distance"))
        for line in text.splitlines():
            self.assertLessEqual(len(line), 79)
        # All ways of calling it, and several functions.
        self.assertEqual(self.output("expr", "--help", "abs").count("abs("), 2)
        self.assertIn("\n\nsqrt(", self.output("expr", "--help", "abs", "sqrt"))

    def test_that_do_not_exist(self):
        message = self.failure(1, "expr", "--help", "distanse")
        self.assertIn("there is no such function; did you mean distance?", message)

    def test_agree_with_the_reference(self):
        reference = (SOURCE / "docs/expressions.md").read_text()
        signatures = [line.strip() for line in self.lines("expr") if line.startswith("  ")]
        self.assertGreater(len(signatures), 40)
        for signature in signatures:
            self.assertIn(f"`{signature}`", reference)


if __name__ == "__main__":
    unittest.main()
