"""Adding from streams that wait, fail or end early, and by several programs at once."""

import os
import signal
import subprocess
import time
import unittest

from program import OVDB, ProgramTest, environment, record


class AddingStreams(ProgramTest):
    def start(self, *options, stdin=subprocess.PIPE):
        return subprocess.Popen([OVDB, "add", *options], stdin=stdin, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                env=environment())

    def wait_for(self, table, records):
        """Until the table has that many; the lines are added as they come."""
        size = len(record(table, ()))
        end = time.monotonic() + 20
        while self.path(table).stat().st_size < records * size:
            self.assertLess(time.monotonic(), end, "the line was not added")
            time.sleep(0.01)

    def test_lines_are_added_as_they_come_and_an_interrupt_says_how_many(self):
        process = self.start(self.table("site"), "--format", "json")
        process.stdin.write(b'{"sta":"A"}\n')
        process.stdin.flush()
        self.wait_for("site", 4)
        process.send_signal(signal.SIGINT)
        out, error = process.communicate(timeout=20)
        self.assertEqual((process.returncode, out, error),
                         (130, b"", b"ovdb: interrupted\nadded 1 record before that\n"))

    def test_a_stream_that_can_not_be_read(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        for form in ("text", "csv", "tsv", "json"):
            process = self.start(self.table("site"), "--format", form, stdin=folder)
            out, error = process.communicate(timeout=20)
            self.assertEqual((process.returncode, out), (1, b""))
            self.assertIn(b"cannot read the rows: Is a directory", error)

    def test_several_programs_add_to_one_table(self):
        self.database.write_text("schema: tiny\n")  # with locks
        each = 200
        programs = [self.start(self.table("assoc"), "--format", "csv", "--checked") for _ in range(4)]
        for number, program in enumerate(programs):
            rows = "".join(f"{1000 * number + i},{7}\n" for i in range(each))
            program.stdin.write(f"arid,orid\n{rows}".encode())
            program.stdin.close()
            program.stdin = None
        for program in programs:
            _, error = program.communicate(timeout=60)
            self.assertEqual((program.returncode, error), (0, b""))
        added = sorted(self.path("assoc").read_bytes().splitlines(keepends=True)[3:])
        wanted = [record("assoc", (str(1000 * number + i), "7")) for number in range(4) for i in range(each)]
        self.assertEqual(added, sorted(wanted))


if __name__ == "__main__":
    unittest.main()
