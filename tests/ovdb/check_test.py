"""check: what it finds in damaged databases, and that a repair loses nothing."""

import collections
import csv
import io
import json
import os
import random
import re
import signal
import subprocess
import time
import unittest
from pathlib import Path

from program import DEMO, OVDB, ProgramTest, environment, run

# name: (type, width, format, null, range)
ATTRIBUTES = {
    "sta": ("string", 6, "%-6s", "-", "sta =~ '^[A-Z]*$'"),
    "lat": ("real", 9, "%9.4f", "-999.0000", "lat >= -90.0 && lat <= 90.0"),
    "elev": ("integer", 5, "%5d", "-999", ""),
    "evid": ("integer", 8, "%8d", "-1", "evid > 0"),
    "orid": ("integer", 8, "%8d", "-1", "orid > 0"),
    "time": ("time", 17, "%17.5f", "-9999999999.99900", ""),
    "day": ("yearday", 8, "%8d", "-1", ""),
    "used": ("boolean", 2, "%2d", "-1", ""),
    "keyname": ("string", 8, "%-8s", "-", ""),
    "keyvalue": ("integer", 8, "%8d", "-1", "keyvalue >= 0"),
}
RELATIONS = {
    "site": ("[sta, lat, elev, day]", "primary: [sta]"),
    "event": ("[evid, sta]", "primary: [evid], defines: evid, foreign: [sta]"),
    "origin": ("[time, lat, orid, evid, used]",
               "primary: [time, lat], alternate: [orid], defines: orid, foreign: [evid]"),
    "lastid": ("[keyname, keyvalue]", "primary: [keyname]"),
}


def schema_text():
    lines = ["name: checked", "description: a schema for tests", "attributes:"]
    for name, (kind, width, form, null, limits) in ATTRIBUTES.items():
        asked = f', range: "{limits}"' if limits else ""
        lines.append(f'  {name}: {{type: {kind}, width: {width}, format: "{form}", null: "{null}"{asked}}}')
    lines.append("relations:")
    for name, (fields, keys) in RELATIONS.items():
        lines.append(f"  {name}: {{fields: {fields}, {keys}}}")
    return "\n".join(lines) + "\n"


def record(table, *values):
    """A record as it stands in a file; None is null, what is left out at the end, too."""
    fields = RELATIONS[table][0].strip("[]").split(", ")
    cells = []
    for name, value in zip(fields, list(values) + [None] * (len(fields) - len(values))):
        kind, width, _, null, _ = ATTRIBUTES[name]
        raw = value if isinstance(value, bytes) else str(null if value is None else value).encode()
        assert len(raw) <= width, (name, value)
        cells.append(raw.ljust(width) if kind == "string" else raw.rjust(width))
    return b" ".join(cells) + b"\n"


def origin(number):
    return record("origin", f"{1000.0 + number:.5f}", f"{number % 90:.4f}", number + 1, number % 5 + 1, "1")


class CheckTest(ProgramTest):
    def setUp(self):
        super().setUp()
        for table in self.folder.glob("db.*"):
            table.unlink()
        (self.folder / "checked.yaml").write_text(schema_text())
        self.database.write_text("schema: checked\n")
        self.put("site", record("site", "AAK", "42.6390", "1645", "2008001"), record("site", "KIV", "43.9550"))
        self.put("event", *[record("event", number, "AAK") for number in range(1, 6)])
        self.put("origin", *[origin(number) for number in range(20)])
        self.put("lastid", record("lastid", "orid", "20"), record("lastid", "evid", "9"))

    def put(self, table, *lines):
        self.path(table).write_bytes(b"".join(lines))

    def check(self, *arguments, code=0):
        """The findings."""
        result = run("check", self.database, "--format", "json", *arguments)
        self.assertEqual(result.returncode, code, (result.stdout, result.stderr))
        return json.loads(result.stdout)

    def found(self, *arguments, code=3):
        """Kind, table, record, field and text of each finding."""
        return [(one["kind"], one["table"], one["record"], one["field"], one["found"])
                for one in self.check(*arguments, code=code)]

    def kept(self, ending, table="origin"):
        return sorted(self.folder.glob(f"db.{table}.{ending}-*"))


class Findings(CheckTest):
    def test_a_good_database_has_none(self):
        self.assertEqual(self.check(), [])
        self.assertEqual(self.output("check", self.database),
                         "checked 4 tables, 29 records: 0 errors, 0 notes\n")
        self.assertEqual(self.output("check", DEMO).splitlines()[-1],
                         "checked 11 tables, 14,916 records: 0 errors, 2 notes")

    def test_values_that_are_none_of_their_type(self):
        self.put("site", record("site", "AAK", "4x.6390", "1.5", "2009366"), record("site", "KIV", " ", "99999"))
        self.assertEqual(self.found(), [("type", "site", 0, "lat", "4x.6390"), ("type", "site", 0, "elev", "1.5"),
                                        ("type", "site", 0, "day", "2009366"), ("type", "site", 1, "lat", "")])
        self.put("site", record("site", "AAK"))
        self.put("origin", record("origin", "yesterdy", "1", "1", "1", "2"))
        self.assertEqual(self.found(), [("type", "origin", 0, "time", "yesterdy"), ("form", "origin", 0, "lat", "1"),
                                        ("type", "origin", 0, "used", "2")])

    def test_places_are_those_in_the_file(self):
        lines = [origin(number) for number in range(20)]
        lines[7] = lines[7].replace(b"   7.0000", b"  97.0000")
        self.put("origin", *lines)
        finding = self.check(code=3)[0]
        size = len(origin(0))
        self.assertEqual(finding, {
            "level": "error", "kind": "range", "table": "origin", "file": str(self.path("origin")), "line": 8,
            "record": 7, "byte": 7 * size + 18, "field": "lat", "found": "97.0000",
            "message": "is out of range: lat >= -90.0 && lat <= 90.0", "more": 0})
        data = self.path("origin").read_bytes()
        self.assertEqual(data[finding["byte"]:].split()[0], b"97.0000")
        text = run("check", self.database).stdout.decode().splitlines()
        self.assertEqual(text, [f"{self.path('origin')}:8: error: record 7, byte {7 * size + 18}, field lat: "
                                "'97.0000' is out of range: lat >= -90.0 && lat <= 90.0 [range]",
                                "checked 4 tables, 29 records: 1 error, 0 notes"])

    def test_ranges_of_texts(self):
        self.put("site", record("site", "aak", "1.0000"), record("site", "AAK", "1.0000"), record("site", "K V"))
        self.assertEqual(self.found(), [("range", "site", 0, "sta", "aak"), ("range", "site", 2, "sta", "K V")])

    def test_characters(self):
        self.put("site", record("site", b"A\0K"), record("site", b"\xff"), record("site", b"A\tK"),
                 record("site", "AAK", b"1\x00"))
        self.assertEqual(self.found(), [
            ("characters", "site", 0, "sta", "A\\x00K"), ("characters", "site", 1, "sta", "\\xff"),
            ("characters", "site", 2, "sta", "A\\x09K"), ("characters", "site", 3, "lat", "1\\x00")])

    def test_separators(self):
        line = record("site", "AAK", "1.0000")
        self.put("site", line[:6] + b"x" + line[7:])
        self.assertEqual(self.found(), [("separator", "site", 0, "sta", "x")])

    def test_keys_that_are_null_or_double(self):
        self.put("event", *[record("event", number, "AAK") for number in (1, 2, 3, 4, 5)],
                 record("event", None, "AAK"), record("event"), record("event", "  3"))
        self.assertEqual(self.found(), [("key-null", "event", 5, "", ""), ("key-double", "event", 7, "evid", "3")])
        lines = [origin(number) for number in range(20)]
        self.put("event", *[record("event", number, "AAK") for number in range(1, 6)])
        self.put("origin", *lines, lines[3].replace(b"1003.00000", b"1003.0000 "))
        found = self.found()
        self.assertIn(("key-double", "origin", 20, "time, lat", "1003.0000, 3.0000"), found)
        self.assertIn(("key-double", "origin", 20, "orid", "4"), found)
        self.put("origin", *lines, record("origin", None, "3.0000", None, "1"))
        self.assertEqual(self.found(code=0), [("key-incomplete", "origin", 20, "", "")])

    def test_foreign_keys_without_a_record(self):
        self.put("event", *[record("event", number, "AAK") for number in (1, 2, 3, 5)], record("event", 9, "NOWHER"))
        found = self.found()
        self.assertEqual(found, [("dangling", "event", 4, "sta", "NOWHER")] +
                         [("dangling", "origin", number, "evid", "4") for number in (3, 8, 13, 18)])
        self.path("event").unlink()
        self.assertEqual(self.found(code=0), [("no-table", "origin", None, "evid", "")])

    def test_counters(self):
        self.put("lastid", record("lastid", "orid", "19"), record("lastid", "evid", "5"), record("lastid", "nope", "1"))
        self.assertEqual(self.found(), [("counter", "lastid", 0, "keyvalue", "orid 19"),
                                        ("no-counter", "lastid", 2, "keyname", "nope")])

    def test_lines_of_other_widths(self):
        lines = [origin(number) for number in range(6)]
        lines[1] = lines[1][:-9] + b"\n"
        lines[3] = lines[3].replace(b"\n", b"yy\n")
        lines[4] = lines[4].replace(b"\n", b"x")  # and so two in one
        self.put("origin", *lines)
        size = len(origin(0))
        found = self.check(code=3)
        self.assertEqual([(one["kind"], one["line"], one["record"], one["byte"]) for one in found],
                         [("line", 2, 1, size), ("line", 4, None, 3 * size - 8), ("line", 5, None, 4 * size - 6)])
        self.assertIn("2 records without a line feed between them", found[2]["message"])

    def test_ends_of_files(self):
        self.put("origin", origin(0), origin(1)[:-1])
        self.assertEqual(self.found(), [("unfinished", "origin", 1, "", origin(1)[:-1].decode())])
        self.put("origin", origin(0), origin(1)[:10])
        self.assertEqual([one[:3] for one in self.found()], [("unfinished", "origin", 1)])
        self.put("origin")
        self.assertEqual(self.check(), [])

    def test_files_of_another_kind(self):
        self.path("origin").unlink()
        self.path("origin").mkdir()
        self.assertEqual(self.found()[0][:2], ("file", "origin"))
        self.path("origin").rmdir()
        self.put("origin", b"\0" * 3000)
        self.assertEqual(self.found()[0][:3], ("unfinished", "origin", 0))

    def test_other_files(self):
        (self.folder / "db.orgin").write_text("x")
        (self.folder / "db.site.bak").write_text("x")
        (self.folder / ".db.site.new").write_text("x")
        (self.folder / "ref").mkdir()
        (self.folder / "ref" / "db.site").write_bytes(self.path("site").read_bytes())
        self.database.write_text("schema: checked\ndbpath: [., ref, away]\n")
        self.assertEqual([(one["kind"], Path(one["file"]).name, one["found"]) for one in self.check(code=3)],
                         [("folder", "db", str(self.folder / "away")), ("leftover", ".db.site.new", ""),
                          ("stray-file", "db.orgin", ""), ("stray-file", "db.site.bak", ""),
                          ("hidden-file", "db.site", "")])

    def test_a_saved_view_that_is_damaged(self):
        view = self.folder / "db.mine"
        view.write_text("saved-view: 1\nnonsense\n")
        found = self.check(code=3)
        self.assertEqual([(one["kind"], one["file"]) for one in found], [("saved-view", str(view))])

    def test_a_descriptor_and_a_schema_that_are_wrong(self):
        self.database.write_text("schema: checked\nlocks: maybe\n")
        self.assertEqual({one["kind"] for one in self.check(code=3)}, {"database"})
        self.database.write_text("schema: checked\n")
        (self.folder / "checked.yaml").write_text(schema_text().replace("primary: [evid]", "primary: [nope]"))
        self.assertIn("nope", self.check(code=3)[0]["message"])
        self.assertIn("no such database", self.failure(1, "check", self.folder / "nothing"))

    def test_a_range_that_cannot_be_asked(self):
        (self.folder / "checked.yaml").write_text(schema_text().replace("evid > 0", "nope > 0"))
        self.assertEqual([one[:4] for one in self.found()], [("schema", "event", None, "evid"),
                                                             ("schema", "origin", None, "evid")])

    def test_of_one_table(self):
        self.put("site", record("site", "aak"))
        self.put("event", record("event", "1", "AAK"))
        result = run("check", self.table("event"), "--format", "json")
        self.assertEqual([one["kind"] for one in json.loads(result.stdout)], ["dangling"])

    def test_more_than_anybody_reads(self):
        self.put("origin", *[origin(number).replace(b" 1\n", b"xx\n") for number in range(20)])
        found = self.check(code=3)
        self.assertEqual([one["record"] for one in found], list(range(10)) + [None])
        self.assertEqual((found[-1]["more"], found[-1]["message"]), (10, "and 10 more of these"))
        self.assertEqual(len(self.check("--all", code=3)), 20)
        self.assertEqual(len(self.check("--limit", "3", code=3)), 4)

    def test_formats(self):
        self.put("site", record("site", "a,b\"", "1.0000"), record("site", "AAK"))
        rows = list(csv.DictReader(io.StringIO(run("check", self.database, "--format", "csv").stdout.decode())))
        self.assertEqual([(row["level"], row["kind"], row["found"], row["more"]) for row in rows],
                         [("error", "range", 'a,b"', "0")])
        self.put("site", record("site", "AAK"))
        self.assertEqual(len(self.lines_of("--format", "tsv")), 1)
        self.assertEqual(self.lines_of("--format", "tsv", "--no-header"), [])
        self.assertEqual(self.lines_of("--format", "json"), ["[]"])

    def lines_of(self, *arguments):
        return run("check", self.database, *arguments).stdout.decode().splitlines()

    def test_many_records_of_which_some_are_bad(self):
        """More than are read at a time: found in order, and all of them, with any number of threads."""
        generator = random.Random(7)
        bad = sorted(generator.sample(range(120_000), 400))
        lines = [origin(number) for number in range(120_000)]
        for number in bad:
            lines[number] = lines[number].replace(b" 1\n", b" x\n")
        for number in bad[::2]:
            lines[number] = lines[number].replace(b"%8d" % (number + 1), b"%8d" % 1)
        self.put("origin", *lines)
        self.put("lastid")
        for threads in "1", "3":
            result = run("check", self.database, "--all", "--format", "json",
                         env=environment(ORVANE_THREADS=threads))
            found = json.loads(result.stdout)
            self.assertEqual([one["record"] for one in found if one["kind"] == "type"], bad)
            doubles = [one["record"] for one in found if one["kind"] == "key-double" and one["field"] == "orid"]
            self.assertEqual(doubles, [number for number in bad[::2] if number != 0])


class Repairs(CheckTest):
    def repair(self, *arguments, code=0):
        return self.check("--repair", *arguments, code=code)

    def test_a_good_database_stays_as_it_is(self):
        before = {path: (path.read_bytes(), path.stat().st_mtime_ns) for path in self.folder.iterdir()}
        self.assertEqual(self.repair(), [])
        self.assertEqual({path: (path.read_bytes(), path.stat().st_mtime_ns) for path in self.folder.iterdir()}, before)

    def test_what_is_wrong_in_fields_stays(self):
        self.put("site", record("site", "aak", "x"), record("site", "AAK"))
        before = self.path("site").read_bytes()
        self.repair(code=3)
        self.assertEqual(self.path("site").read_bytes(), before)

    def test_a_missing_last_line_feed(self):
        self.put("origin", origin(0), origin(1)[:-1])
        self.assertEqual([one["level"] for one in self.check("--dry-run", code=3)], ["error", "repair"])
        self.assertEqual(self.path("origin").read_bytes(), origin(0) + origin(1)[:-1])
        self.assertEqual([one["message"] for one in self.repair()][1:], ["the last line got its line feed"])
        self.assertEqual(self.path("origin").read_bytes(), origin(0) + origin(1))
        self.assertEqual(self.check(), [])
        self.assertEqual(self.kept("damaged") + self.kept("before"), [])

    def test_an_unfinished_last_line(self):
        self.put("origin", origin(0), origin(1)[:20])
        self.repair()
        self.assertEqual(self.path("origin").read_bytes(), origin(0))
        self.assertEqual([path.read_bytes() for path in self.kept("damaged")], [origin(1)[:20]])
        self.assertEqual({one["kind"] for one in self.check()}, {"kept-file"})

    def test_lines_in_the_middle(self):
        damage = [origin(2)[:-5] + b"\n", b"\n", b"x" * 300 + b"\n", origin(3)[:-1] + b"!" + origin(4)]
        before = origin(0) + damage[0] + damage[1] + origin(1) + damage[2] + damage[3] + origin(5)[:-1]
        self.put("origin", before)
        os.chmod(self.path("origin"), 0o640)
        told = [one for one in self.repair() if one["level"] == "repair"]
        self.assertEqual(self.path("origin").read_bytes(), origin(0) + origin(1) + origin(5))
        damaged, = self.kept("damaged")
        copy, = self.kept("before")
        self.assertEqual((damaged.read_bytes(), copy.read_bytes()), (b"".join(damage), before))
        self.assertTrue(any(str(damaged) in one["message"] for one in told), told)
        self.assertTrue(any(str(copy) in one["message"] for one in told), told)
        for path in self.path("origin"), damaged, copy:
            self.assertEqual(path.stat().st_mode & 0o777, 0o640)
        self.assertEqual({one["kind"] for one in self.check()}, {"kept-file"})
        self.assertEqual(self.output("select", self.table("origin"), "--count"), "3\n")

    def test_a_table_of_another_schema_stays(self):
        before = b"something else\naltogether\n"
        self.put("origin", before)
        found = self.repair(code=3)
        self.assertTrue(any("may be of another schema" in one["message"] for one in found), found)
        self.assertEqual(self.path("origin").read_bytes(), before)
        self.assertEqual(self.kept("damaged") + self.kept("before"), [])

    def test_counters_are_raised_and_never_lowered(self):
        self.put("lastid", record("lastid", "orid", "3"), record("lastid", "evid", "900"))
        self.assertEqual([one["level"] for one in self.check("--dry-run", code=3)], ["error", "repair"])
        self.repair()
        self.assertEqual(self.path("lastid").read_bytes(),
                         record("lastid", "orid", "20") + record("lastid", "evid", "900"))
        self.assertEqual(self.check(), [])

    def test_a_folder_that_cannot_be_written(self):
        if os.geteuid() == 0:
            # The rights of folders don't hold for this user: a file that is a folder does.
            self.put("origin", origin(0), b"short\n", origin(1))
            (self.folder / ".db.origin.new").mkdir()
            (self.folder / ".db.origin.new" / "x").write_text("")
            before = self.path("origin").read_bytes()
            found = self.repair(code=3)
            self.assertTrue(any("was not repaired" in one["message"] for one in found), found)
            self.assertEqual(self.path("origin").read_bytes(), before)
            self.assertEqual(self.kept("damaged") + self.kept("before"), [])
            return
        self.put("origin", origin(0), b"short\n", origin(1))
        self.folder.chmod(0o500)
        self.addCleanup(self.folder.chmod, 0o700)
        before = self.path("origin").read_bytes()
        self.repair(code=3)
        self.assertEqual(self.path("origin").read_bytes(), before)

    def damaged_at_random(self, generator):
        data = bytearray(b"".join(origin(number) for number in range(generator.randint(1, 40))))
        for _ in range(generator.randint(1, 6)):
            at = generator.randrange(len(data) + 1)
            kind = generator.choice(["flip", "cut", "insert", "feed", "nulls", "end"])
            if kind == "flip" and at < len(data):
                data[at] = generator.randrange(256)
            elif kind == "cut":
                del data[at:at + generator.randint(1, 120)]
            elif kind == "insert":
                data[at:at] = bytes(generator.randrange(256) for _ in range(generator.randint(1, 120)))
            elif kind == "feed":
                data[at:at] = b"\n" * generator.randint(1, 3)
            elif kind == "nulls":
                data[at:at + 64] = bytes(len(data[at:at + 64]))
            else:
                del data[at:]
        return bytes(data)

    def assert_nothing_lost(self, before):
        """Every line of the table before is in the table or in what was put aside, as often, and in order."""
        after = self.path("origin").read_bytes()
        aside = b"".join(path.read_bytes() for path in self.kept("damaged"))
        size = len(origin(0))
        lines = re.findall(rb"[^\n]*\n|[^\n]+$", before)
        is_record = [len(line) == size - (not line.endswith(b"\n")) for line in lines]
        if not any(is_record):
            self.assertIn(after, (before, b""))
            self.assertEqual(after + aside, before)
            return
        good = [line for line, good in zip(lines, is_record) if good]
        if not good[-1].endswith(b"\n"):
            good[-1] += b"\n"
        self.assertEqual(after, b"".join(good))
        self.assertEqual(aside, b"".join(line for line, good in zip(lines, is_record) if not good))

    def test_random_damage(self):
        for seed in range(int(os.environ.get("ORVANE_DAMAGED_FILES", "120"))):
            with self.subTest(seed=seed):
                for path in self.kept("damaged") + self.kept("before"):
                    path.unlink()
                before = self.damaged_at_random(random.Random(seed))
                self.put("origin", before)
                result = run("check", self.database, "--repair", "--format", "json")
                self.assertIn(result.returncode, (0, 3), result.stderr)
                self.assert_nothing_lost(before)
                again = [one["kind"] for one in self.check("--all", code=result.returncode)]
                if self.path("origin").read_bytes() != before or result.returncode == 0:
                    self.assertFalse({"line", "unfinished", "counter"} & set(again), again)

    def test_killed_while_it_repairs(self):
        before = b"".join(origin(number) + (b"damage\n" if number % 5000 == 9 else b"") for number in range(60_000))
        good = b"".join(origin(number) for number in range(60_000))
        aside = b"damage\n" * (before.count(b"damage"))
        generator = random.Random(5)
        outcomes = collections.Counter()
        for _ in range(int(os.environ.get("ORVANE_REPAIR_KILLS", "25"))):
            self.put("origin", before)
            program = subprocess.Popen([OVDB, "check", self.table("origin"), "--repair"], env=environment(),
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            time.sleep(generator.uniform(0, 0.4))
            program.send_signal(signal.SIGKILL)
            program.wait()
            after = self.path("origin").read_bytes()
            self.assertIn(after, (before, good))
            outcomes[after == good] += 1
            if after == good:
                self.assertTrue(any(path.read_bytes() == aside for path in self.kept("damaged")))
                self.assertTrue(any(path.read_bytes() == before for path in self.kept("before")))
            run("check", self.table("origin"), "--repair")
            self.assertEqual(self.path("origin").read_bytes(), good)
            for path in self.kept("damaged") + self.kept("before"):
                path.unlink()
        print(f"killed while repairing: {outcomes[False]} before, {outcomes[True]} after the table was replaced")

    def test_other_programs_add_meanwhile(self):
        """A record that is acknowledged while the table is repaired is in the table afterwards."""
        self.put("origin", *[origin(number) for number in range(5000)], b"damage\n",
                 *[origin(number) for number in range(5000, 30_000)])
        self.put("lastid")
        repairing = subprocess.Popen([OVDB, "check", self.database, "--repair"], env=environment(),
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        added = 0
        number = 100_000
        while (repairing.poll() is None or added == 0) and number < 101_000:
            line = origin(number).decode().split()
            text = ",".join(line).encode()
            done = run("add", self.table("origin"), "--format", "csv", "--no-header", "--fields",
                       "time,lat,orid,evid,used", stdin=text + b"\n")
            if done.returncode == 0:  # before it is repaired the table may be refused
                added += 1
            number += 1
        self.assertEqual(self.path("origin").read_bytes().count(b"\n"), 30_000 + added)


if __name__ == "__main__":
    unittest.main()
