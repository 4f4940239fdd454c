"""Pipes, full disks, interrupts, terminals, and rows without end."""

import json
import os
import pty
import re
import select
import signal
import subprocess
import time
import unittest
from pathlib import Path

from program import OVDB, ProgramTest, environment, run


# A condition that has to be tried with every pair.
EVERY_PAIR = "kinds.lat * lonely.flag == 7.03"


class LargeTable(ProgramTest):
    """A million rows in the table `lonely`."""

    COUNT = 1000000

    def setUp(self):
        super().setUp()
        block = b"".join(b" 1 %-24d\n" % (i % 1000) for i in range(10000))
        with open(self.path("lonely"), "wb") as file:
            for _ in range(self.COUNT // 10000):
                file.write(block)

    def start(self, *arguments, **options):
        # A sanitizer keeps little of what was let go, so that memory can be looked at with it as without.
        process = subprocess.Popen([OVDB, *map(str, arguments)], env=environment(ASAN_OPTIONS="quarantine_size_mb=1"),
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)
        self.addCleanup(process.stderr.close)
        self.addCleanup(process.stdout.close)
        self.addCleanup(lambda: process.poll() is None and process.kill())
        return process

    def write_kinds(self, count):
        with open(self.path("kinds"), "wb") as file:
            for start in range(0, count, 10000):
                file.write(b"".join(b" 1  2018001 %8d %9.4f %17.5f %-24d\n" % (i, i % 90, i, i)
                                    for i in range(start, start + 10000)))


class ManyRows(LargeTable):
    def test_a_reader_that_goes_away_ends_it_quietly(self):
        for options in ([], ["--format", "csv"], ["--format", "json"], ["--sort", "note"]):
            process = self.start("select", self.table("lonely"), *options)
            self.assertTrue(process.stdout.readline())
            process.stdout.close()
            self.assertEqual(process.wait(30), -signal.SIGPIPE, options)
            self.assertEqual(process.stderr.read(), b"")

    def test_also_where_the_signal_is_ignored(self):
        process = self.start("select", self.table("lonely"),
                             preexec_fn=lambda: signal.signal(signal.SIGPIPE, signal.SIG_IGN), restore_signals=False)
        process.stdout.readline()
        process.stdout.close()
        self.assertEqual(process.wait(30), -signal.SIGPIPE)
        self.assertEqual(process.stderr.read(), b"")

    def test_in_a_shell(self):
        command = f'"{OVDB}" select "{self.table("lonely")}" --format csv | head -1'
        result = subprocess.run(["bash", "-c", command], env=environment(), capture_output=True, check=False)
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, b"flag,note\n", b""))

    def test_the_first_rows_come_at_once(self):
        process = self.start("select", self.table("lonely"), "--format", "json")
        self.assertEqual([process.stdout.readline() for _ in range(2)], [b"[\n", b'{"flag":1,"note":"0"},\n'])
        self.assertIsNone(process.poll())  # it waits for its reader

    def peak(self, *options):
        """The most memory, in kilobytes, that a select had whose rows were read by and by."""
        process = self.start("select", self.table("lonely"), *options)
        status = Path(f"/proc/{process.pid}/status")
        most = 0
        while process.stdout.read1(1 << 20):
            found = re.search(r"VmHWM:\s+(\d+) kB", status.read_text())
            most = max(most, int(found[1]) if found else 0)
        self.assertEqual(process.wait(30), 0)
        self.assertGreater(most, 1024)
        return most

    def test_memory_does_not_grow_with_the_rows(self):
        formats = (["--format", "json"], ["--format", "csv"], [])
        of_all = [self.peak(*options) for options in formats]
        os.truncate(self.path("lonely"), self.path("lonely").stat().st_size // 4)
        for options, most in zip(formats, of_all):
            self.assertLess(most, self.peak(*options) + 8 * 1024, options)  # the table alone has 28 MB

    def test_all_rows_come(self):
        result = run("select", self.table("lonely"), "--format", "json", "--sort", "note")
        objects = json.loads(result.stdout)
        self.assertEqual(len(objects), self.COUNT)
        notes = [row["note"] for row in objects]
        self.assertEqual(notes, sorted(notes))
        self.assertEqual(run("select", self.table("lonely")).stdout, self.path("lonely").read_bytes())

    def test_limit_ends_early(self):
        # A table that is too large to be read in this time: its end is a hole.
        size = self.path("lonely").stat().st_size
        os.truncate(self.path("lonely"), size * 2000)
        with open(self.path("lonely"), "r+b") as file:
            file.seek(size * 2000 - 1)
            file.write(b"\n")
        begin = time.monotonic()
        self.assertEqual(len(self.lines("select", self.table("lonely"), "--limit", "1000")), 1000)
        self.assertLess(time.monotonic() - begin, 5)


class Interrupts(LargeTable):
    def interrupted(self, process, wait_for_output=False):
        """Presses the interrupt key half way and answers how long the end took."""
        if wait_for_output:
            process.stdout.readline()
        else:
            time.sleep(0.7)
        self.assertIsNone(process.poll(), "it was done too soon")
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        process.wait(30)
        took = time.monotonic() - begin
        self.assertEqual(process.returncode, 130)
        self.assertEqual(process.stderr.read(), b"ovdb: interrupted\n")
        return took

    def test_end_a_theta_join_of_a_million_by_a_million(self):
        self.write_kinds(self.COUNT)
        process = self.start("select", self.table("kinds"), "--theta-join", "lonely",
                             EVERY_PAIR)
        self.assertLess(self.interrupted(process), 2)
        self.assertEqual(process.stdout.read(), b"")
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()),
                         ["db", "db.arrival", "db.assoc", "db.kinds", "db.lonely", "db.site", "tiny.yaml"])

    def test_end_the_writing_to_a_reader_that_waits(self):
        for options in ([], ["--format", "json"]):
            process = self.start("select", self.table("lonely"), *options)
            self.assertLess(self.interrupted(process, wait_for_output=True), 2)


class FullAndClosed(ProgramTest):
    def test_a_full_disk_is_an_error(self):
        for options in (["select", self.table("site")], ["select", self.table("site"), "--format", "json"],
                        ["select", self.table("site"), "--format", "csv"], ["select", self.table("site"), "--count"],
                        ["tables", self.database], ["fields", self.database], ["info", self.database],
                        ["--help"], ["expr"]):
            with open("/dev/full", "wb") as full:
                self.assertIn("No space left on device", self.failure(1, *options, stdout=full), options)

    def test_a_closed_output_is_an_error_and_no_file_takes_its_place(self):
        before = {path: path.read_bytes() for path in self.folder.iterdir()}
        for options in ("", "--format json"):
            command = f'"{OVDB}" select "{self.table("site")}" {options} >&-'
            result = subprocess.run(["bash", "-c", command], env=environment(), capture_output=True, check=False)
            self.assertEqual(result.returncode, 1)
            self.assertIn(b"Bad file descriptor", result.stderr)
        self.assertEqual({path: path.read_bytes() for path in self.folder.iterdir()}, before)


class Terminals(LargeTable):
    def on_terminal(self, *arguments, stdout):
        """What comes to a terminal that is standard error, and the exit code."""
        ours, theirs = pty.openpty()
        process = subprocess.Popen([OVDB, *map(str, arguments)], env=environment(), stderr=theirs, stdout=stdout)
        os.close(theirs)
        shown = b""
        pressed = False
        deadline = time.monotonic() + 30
        while time.monotonic() < deadline:
            if select.select([ours], [], [], 0.2)[0]:
                try:
                    shown += os.read(ours, 4096)
                except OSError:  # the other end is closed
                    break
            if b"%" in shown and not pressed:
                process.send_signal(signal.SIGINT)
                pressed = True
        os.close(ours)
        return shown, process.wait(30)

    def test_show_how_far_a_long_operation_is(self):
        self.write_kinds(self.COUNT)
        shown, code = self.on_terminal("select", self.table("kinds"), "--theta-join", "lonely",
                                       EVERY_PAIR,
                                       stdout=subprocess.DEVNULL)
        self.assertEqual(code, 130)
        self.assertRegex(shown, rb"\r\x1b\[Kovdb: --theta-join: \d+ %")
        self.assertTrue(shown.endswith(b"\r\x1b[Kovdb: interrupted\r\n"), shown)

    def test_show_nothing_of_a_short_one(self):
        shown, code = self.on_terminal("select", self.table("site"), stdout=subprocess.DEVNULL)
        self.assertEqual((shown, code), (b"", 0))


if __name__ == "__main__":
    unittest.main()
