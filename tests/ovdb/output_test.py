"""select --output: every form in readers of its own, and nothing half under the name that was asked for."""

import csv
import datetime
import json
import os
import resource
import signal
import stat
import subprocess
import time
import unittest

import openpyxl
from program import OVDB, ProgramTest, environment, record, run

NASTY = ('a,b "c"', "tab\tand more", "'single'", "=1+1", "Zürich – naïve")


class Output(ProgramTest):
    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"
        self.out.mkdir()

    def nothing_else(self, *names):
        self.assertEqual(sorted(os.listdir(self.out)), sorted(names))

    def select(self, file, *options, table="arrival"):
        path = self.out / file
        self.assertEqual(self.output("select", self.table(table), "--output", path, *options), "")
        return path

    def test_streams_are_what_standard_output_would_have(self):
        for extension, form in (("txt", "text"), ("csv", "csv"), ("tsv", "tsv"), ("json", "json")):
            for options in ([], ["--header"], ["--subset", "arid > 1", "--fields", "arid,sta", "--limit", "2"]):
                path = self.select(f"rows.{extension}", *options, "--force")
                self.assertEqual(path.read_text(),
                                 self.output("select", self.table("arrival"), "--format", form, *options))
                self.assertEqual(self.select("other", *options, "--force", "--format", form).read_bytes(),
                                 path.read_bytes())
        self.assertEqual(self.select("copy.txt").read_bytes(), self.path("arrival").read_bytes())

    def test_texts_with_quotes_and_separators_come_back(self):
        self.write("lonely", *(("1", text) for text in NASTY))
        for extension, options in (("csv", {}), ("tsv", {"delimiter": "\t"})):
            with open(self.select(f"rows.{extension}", table="lonely"), newline="", encoding="utf-8") as file:
                self.assertEqual(list(csv.reader(file, **options)), [["flag", "note"]] + [["1", t] for t in NASTY])
        notes = [row["note"] for row in json.loads(self.select("rows.json", table="lonely").read_text())]
        self.assertEqual(notes, list(NASTY))
        sheet = openpyxl.load_workbook(self.select("rows.xlsx", table="lonely")).active
        self.assertEqual([row[1] for row in sheet.iter_rows(min_row=2, values_only=True)], list(NASTY))

    def test_a_spreadsheet_has_numbers_dates_and_empty_cells(self):
        self.write("kinds", ("1", "2018038", "7", "1.5", "1517961600.25000", "text"), ("0", None, "8"))
        path = self.select("rows.xlsx", table="kinds")
        sheet = openpyxl.load_workbook(path).active
        rows = list(sheet.iter_rows(values_only=True))
        self.assertEqual(rows[0], ("flag", "jdate", "orid", "lat", "time", "note"))
        when = datetime.datetime(2018, 2, 7, 0, 0, 0, 250000)
        self.assertEqual(rows[1], (1, 2018038, 7, 1.5, when, "text"))
        self.assertEqual(rows[2], (0, None, 8, None, None, None))
        self.assertTrue(all(cell.font.bold for cell in sheet[1]))
        self.assertFalse(any(cell.font.bold for cell in sheet[2]))
        self.assertEqual(sheet["E2"].number_format, "m/d/yy h:mm:ss.00")
        self.assertGreater(sheet.column_dimensions["E"].width, 17)
        bare = openpyxl.load_workbook(self.select("bare.xlsx", "--no-header", "--fields", "orid,flag", "--limit", "1",
                                                  table="kinds")).active
        self.assertEqual(list(bare.iter_rows(values_only=True)), [(7, 1)])
        self.nothing_else("rows.xlsx", "bare.xlsx")

    def test_what_is_no_value_is_an_empty_cell_and_counted(self):
        self.write("kinds", ("1", "2018038", "x7", "north", "some day"), ("1", "2018038", "9", "1.0", "5.0"))
        path = self.out / "rows.xlsx"
        result = run("select", self.table("kinds"), "--output", path)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stderr.decode().splitlines(),
                         [f"ovdb: note: field {name}: 1 values are no {kind} and are written as empty cells"
                          for name, kind in (("orid", "whole numbers"), ("lat", "numbers"), ("time", "times"))])
        rows = list(openpyxl.load_workbook(path).active.iter_rows(min_row=2, values_only=True))
        self.assertEqual(rows[0][2:5], (None, None, None))

    def test_more_rows_than_a_sheet_holds_are_said_before_writing(self):
        block = record("lonely", ("1", "x")) * 10000
        with open(self.path("lonely"), "wb") as file:
            for _ in range(105):
                file.write(block)
        message = self.failure(1, "select", self.table("lonely"), "--output", self.out / "rows.xlsx")
        self.assertIn("1050000 rows are more than the 1048575 that a spreadsheet holds; nothing was written", message)
        self.nothing_else()

    def test_a_saved_view_comes_back(self):
        path = self.select("north", "--format", "view", "--subset", "arid >= 2", "--sort", "time")
        with open(path, "rb") as file:
            text = file.read()
        rows = self.output("select", self.table("arrival"), "--subset", "arid >= 2", "--sort", "time")
        self.assertEqual(self.output("select", "-", stdin=text), rows)

    def test_a_new_database_has_the_records(self):
        for name, options in (("all", []), ("some", ["--subset", "sta == 'KIV'", "--join", "site"])):
            path = self.select(name, "--format", "database", *options)
            expected = self.output("select", self.table("arrival"), *options)
            self.assertEqual(self.output("select", f"{path}.arrival", *options), expected)
        self.assertIn("is there already", self.failure(1, "select", self.table("arrival"), "--format", "database",
                                                       "--output", self.out / "all"))

    def test_a_file_that_is_there_stays_unless_force_says_so(self):
        for extension in ("txt", "csv", "json", "xlsx"):
            path = self.out / f"rows.{extension}"
            path.write_text("precious")
            path.chmod(0o640)
            message = self.failure(1, "select", self.table("site"), "--output", path)
            self.assertIn("there is a file already; it was left as it is (--force replaces it)", message)
            self.assertEqual(path.read_text(), "precious")
            self.select(path.name, "--force", table="site")
            self.assertNotEqual(path.read_bytes()[:8], b"precious")
            self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o640)
        link = self.out / "link.csv"
        link.symlink_to(self.out / "rows.csv")
        self.select("link.csv", "--force", "--no-header", table="site")
        self.assertTrue(link.is_symlink())
        self.assertTrue((self.out / "rows.csv").read_text().startswith("AAK,"))

    def test_what_does_not_go_together_is_a_wrong_argument(self):
        table = self.table("site")
        for options, reason in ((["--output", self.out / "rows"], "its extension tells no format"),
                                (["--format", "xlsx"], "--format xlsx needs --output FILE"),
                                (["--format", "view"], "--format view needs --output FILE"),
                                (["--force"], "--force belongs to --output FILE"),
                                (["--count", "--output", self.out / "n.csv"], "--count writes no rows"),
                                (["--limit", "1", "--format", "view", "--output", self.out / "v"], "do not go with it"),
                                (["--fields", "sta", "--format", "database", "--output", self.out / "d"], "do not go"),
                                (["--force", "--format", "database", "--output", self.out / "d"], "and no database"),
                                (["--output", ""], "the name of the file is empty"),
                                (["--format", "pdf"], "there are text csv tsv json xlsx view database")):
            self.assertIn(reason, self.failure(2, "select", table, *options))
        self.assertIn("there are text csv tsv json\n", self.failure(2, "tables", self.database, "--format", "xlsx"))
        self.nothing_else()

    def test_paths_that_cannot_be_written(self):
        self.assertIn("No such file or directory",
                      self.failure(1, "select", self.table("site"), "--output", self.out / "no" / "rows.csv"))
        self.assertIn("Is a directory", self.failure(1, "select", self.table("site"), "--output", self.out, "--format",
                                                     "csv", "--force"))
        full = self.out / "full.csv"
        full.symlink_to("/dev/full")
        self.assertIn("No space left on device", self.failure(1, "select", self.table("site"), "--output", full))
        if os.geteuid() != 0:
            self.out.chmod(0o500)
            self.addCleanup(self.out.chmod, 0o700)
            self.assertIn("Permission denied",
                          self.failure(1, "select", self.table("site"), "--output", self.out / "rows.csv"))

    def test_a_name_that_is_wrong_makes_no_file(self):
        self.failure(1, "select", self.table("site"), "--fields", "nonsense", "--output", self.out / "rows.csv")
        self.failure(1, "select", self.table("nowhere"), "--output", self.out / "rows.csv")
        self.nothing_else()

    def test_devices_are_written_to_as_they_are(self):
        self.assertEqual(self.output("select", self.table("site"), "--format", "csv", "--output", "/dev/stdout"),
                         self.output("select", self.table("site"), "--format", "csv"))


class ManyRows(ProgramTest):
    """What ends half way leaves nothing."""

    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"
        self.out.mkdir()
        block = b"".join(record("lonely", ("1", str(i))) for i in range(10000))
        with open(self.path("lonely"), "wb") as file:
            for _ in range(20):
                file.write(block)

    FORMS = (("rows.csv", []), ("rows.json", []), ("rows.xlsx", []), ("rows", ["--format", "view"]),
             ("rows", ["--format", "database"]))

    def test_a_disk_that_gets_full_leaves_nothing(self):
        def small_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))

        for name, options in self.FORMS:
            result = subprocess.run([OVDB, "select", self.table("lonely"), "--output", self.out / name, *options],
                                    env=environment(), capture_output=True, preexec_fn=small_files, check=False)
            self.assertEqual(result.returncode, 1, (name, options, result.stderr))
            self.assertRegex(result.stderr.decode(), "File too large|cannot|room|failed")
            self.assertEqual(os.listdir(self.out), [], (name, options))

    def test_an_interrupt_leaves_nothing(self):
        for name, options in self.FORMS:
            for number, code in ((signal.SIGINT, 130), (signal.SIGTERM, 130)):
                if number == signal.SIGTERM and name == "rows" and options == ["--format", "database"]:
                    continue  # the library's own files; the interrupt key alone is asked for
                with self.subTest(name=name, options=options, signal=number):
                    process = subprocess.Popen(
                        [OVDB, "select", self.table("lonely"), "--sort", "note", "--output", self.out / name, *options],
                        env=environment(), stderr=subprocess.PIPE)
                    deadline = time.monotonic() + 20
                    while not os.listdir(self.out) and process.poll() is None and time.monotonic() < deadline:
                        time.sleep(0.001)
                    process.send_signal(number)
                    said = process.stderr.read()
                    process.wait(30)
                    process.stderr.close()
                    if process.returncode == 0:  # it was done before the signal came
                        subprocess.run(["rm", "-rf", *(self.out / entry for entry in os.listdir(self.out))], check=True)
                        continue
                    self.assertEqual((process.returncode, said), (code, b"ovdb: interrupted\n"))
                    self.assertEqual(os.listdir(self.out), [])

    def test_all_rows_come(self):
        self.output("select", self.table("lonely"), "--output", self.out / "rows.xlsx")
        book = openpyxl.load_workbook(self.out / "rows.xlsx", read_only=True)
        count, total = 0, 0
        for row in book.active.iter_rows(min_row=2, values_only=True):
            count += 1
            total += int(row[1])
        self.assertEqual((count, total), (200000, 20 * sum(range(10000))))


if __name__ == "__main__":
    unittest.main()
