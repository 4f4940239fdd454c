"""Changes that the system refuses or holds up: read-only files and folders, a full disk, the lock of another program.
An error with its reason, and the table as it was."""

import fcntl
import os
import resource
import signal
import struct
import subprocess
import time
import unittest

from program import OVDB, ProgramTest, environment

NOBODY = 65534
CHANGES = [(["set", "--where", "1==1", "lat=1"], b""), (["mark", "--where", "1==1"], b""),
           (["add", "--format", "csv"], b"sta\nNEW\n")]


class RefusedChanges(ProgramTest):
    def setUp(self):
        super().setUp()
        self.before = self.path("site").read_bytes()

    def run_as(self, prepare, command, options, stdin=b""):
        """The message of a change that fails."""
        result = subprocess.run([OVDB, command, self.table("site"), *options], input=stdin, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, env=environment(), preexec_fn=prepare, timeout=60)
        message = result.stderr.decode()
        self.assertEqual(result.returncode, 1, message)
        self.assertTrue(message.startswith("ovdb: "), message)
        self.assertEqual(self.path("site").read_bytes(), self.before, command)
        return message

    @staticmethod
    def as_nobody():
        """The administrator may write what is read-only."""
        if os.geteuid() == 0:
            os.setgroups([])
            os.setuid(NOBODY)

    def test_a_read_only_file(self):
        os.chmod(self.folder, 0o755)
        os.chmod(self.path("site"), 0o444)
        for (command, *options), stdin in CHANGES:
            message = self.run_as(self.as_nobody, command, options, stdin)
            self.assertIn("db.site", message)
            self.assertIn("Permission denied", message)

    def test_a_read_only_folder(self):
        self.assertEqual(self.output("mark", self.table("site"), "--where", "sta=='KIV'"), "marked 1 record\n")
        self.before = self.path("site").read_bytes()
        os.chmod(self.path("site"), 0o666)
        os.chmod(self.folder, 0o555)
        self.addCleanup(os.chmod, self.folder, 0o755)
        self.assertIn("Permission denied", self.run_as(self.as_nobody, "crunch", []))
        self.path("arrival").unlink()
        result = subprocess.run([OVDB, "add", self.table("arrival"), "--format", "csv"], input=b"sta\nNEW\n",
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment(),
                                preexec_fn=self.as_nobody, timeout=60)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"Permission denied", result.stderr)
        self.assertFalse(self.path("arrival").exists())

    def test_a_full_disk(self):
        size = len(self.before)

        def fill():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

        message = self.run_as(fill, "add", ["--format", "csv"], b"sta\nNEW\n")
        self.assertIn("db.site: a record cannot be added", message)
        self.assertIn("File too large", message)
        self.assertIn("added 0 records before that", message)

    def test_a_lock_is_waited_for_and_can_be_given_up(self):
        self.database.write_text("schema: tiny\n")  # with locks
        with open(self.path("site"), "r+b") as held:
            lock = struct.pack("hhqqi4x", fcntl.F_WRLCK, os.SEEK_SET, 0, 1 << 62, 0)
            fcntl.fcntl(held, 37, lock)  # F_OFD_SETLK
            for (command, *options), stdin in CHANGES:
                process = subprocess.Popen([OVDB, command, self.table("site"), *options], stdin=subprocess.PIPE,
                                           stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=environment())
                process.stdin.write(stdin)
                process.stdin.close()
                process.stdin = None
                said = process.stderr.readline().decode()
                self.assertIn("db.site: is locked by ", said)
                self.assertIn(f"(process {os.getpid()}); waiting until it is free", said)
                process.send_signal(signal.SIGINT)
                _, rest = process.communicate(timeout=20)
                self.assertEqual(process.returncode, 130, rest)
                self.assertEqual(self.path("site").read_bytes(), self.before)
            process = subprocess.Popen([OVDB, "set", self.table("site"), *CHANGES[0][0][1:]], stdout=subprocess.PIPE,
                                       stderr=subprocess.PIPE, env=environment())
            time.sleep(0.3)
            self.assertIsNone(process.poll())
        out, _ = process.communicate(timeout=20)
        self.assertEqual((process.returncode, out), (0, b"changed 3 records\n"))


if __name__ == "__main__":
    unittest.main()
