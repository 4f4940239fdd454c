"""Changes on a real disk that is full, and on one that is read-only: each fails with its reason, the files are as they
were, and it goes well once there is room. Mounting such a disk takes the administrator."""

import ctypes
import errno
import os
import subprocess
import unittest
from pathlib import Path

from program import ProgramTest, record, run, schema_text

CLONE_NEWNS = 0x20000
PAGE = 4096
FULL = "No space left on device"
READ_ONLY = "Read-only file system"


def own_mounts():
    """Mounts of our own, which no other process sees. Answers why not."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNS) != 0:
        return os.strerror(ctypes.get_errno())
    made = subprocess.run(["mount", "--make-rprivate", "/"], stderr=subprocess.PIPE, check=False)
    return made.stderr.decode().strip()


WHY_NOT = own_mounts()


@unittest.skipIf(WHY_NOT, f"a disk can't be mounted here, which takes the administrator: {WHY_NOT}")
class RealDisk(ProgramTest):
    sites = 300

    def setUp(self):
        super().setUp()
        disk = self.folder / "disk"
        disk.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=256k", "orvane-test", disk], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", disk], check=True)
        self.folder = disk
        self.database = disk / "db"
        (disk / "tiny.yaml").write_text(schema_text())
        self.database.write_text("schema: tiny\n")
        self.write("site", *((f"S{number}", "1.0000") for number in range(self.sites)))
        self.filler = disk / "filler"

    def fill(self):
        with open(self.filler, "wb", buffering=0) as filler:
            try:
                while True:
                    filler.write(b"x" * PAGE)
            except OSError as error:
                self.assertEqual(error.errno, errno.ENOSPC)

    def make_room(self):
        self.filler.unlink()

    def set_read_only(self, read_only):
        subprocess.run(["mount", "-o", "remount," + ("ro" if read_only else "rw"), self.folder], check=True)

    def content(self):
        return {path.name: path.read_bytes() for path in self.folder.iterdir() if path != self.filler}

    def refused(self, reason, *arguments, stdin=b""):
        """A change that fails for this reason, and leaves every file as it was."""
        before = self.content()
        result = run(*arguments, stdin=stdin)
        message = result.stderr.decode()
        self.assertEqual(result.returncode, 1, (arguments, message))
        self.assertIn(reason, message, arguments)
        self.assertIn("db", message)
        after = self.content()
        self.assertEqual(sorted(after), sorted(before), arguments)
        for name, content in before.items():
            self.assertTrue(after[name] == content, (arguments, name))
        return message

    def done(self, *arguments, stdin=b""):
        result = run(*arguments, stdin=stdin)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), arguments)

    # More than what is left of the last page.
    new_records = b"sta\n" + b"".join(b"N%d\n" % number for number in range(200))

    def test_a_full_disk_takes_records_while_it_can_and_tells_how_many(self):
        self.fill()
        before = self.path("site").read_bytes()
        result = run("add", self.table("site"), "--format", "csv", stdin=self.new_records)
        message = result.stderr.decode()
        self.assertEqual(result.returncode, 1, message)
        self.assertIn(FULL, message)
        after = self.path("site").read_bytes()
        length = len(record("site", ("S0",)))
        added = (len(after) - len(before)) // length
        self.assertTrue(after.startswith(before))
        self.assertEqual(len(after) % length, 0, "whole records")
        self.assertIn(f"added {added} records before that", message)
        self.refused(FULL, "add", self.table("site"), "--format", "csv", stdin=self.new_records)
        self.make_room()
        self.done("add", self.table("site"), "--format", "csv", stdin=self.new_records)

    def test_a_full_disk_refuses_what_needs_room(self):
        self.done("mark", self.table("site"), "--where", "sta=='S3'")
        crunch = ["crunch", self.table("site")]
        create = ["create", self.folder / "new", "--schema", "tiny"]
        first = ["add", self.table("lonely"), "--format", "csv"]
        self.fill()
        self.refused(FULL, *crunch)
        self.refused(FULL, *create)
        self.refused(FULL, *first, stdin=b"note\nthe first\n")
        self.make_room()
        self.done(*crunch)
        self.done(*create)
        self.done(*first, stdin=b"note\nthe first\n")
        self.assertEqual(self.path("site").read_bytes().count(b"\n"), self.sites - 1)

    def test_a_full_disk_changes_whole_records_and_tells_how_many(self):
        """A record that lies on two pages needs a note of what it was, and the note needs room."""
        change = ["set", self.table("site"), "--where", "1==1", "note=changed"]
        self.fill()
        before = self.path("site").read_bytes().splitlines()
        result = run(*change)
        message = result.stderr.decode()
        self.assertEqual(result.returncode, 1, message)
        self.assertIn(FULL, message)
        after = self.path("site").read_bytes().splitlines()
        changed = sum(b"changed" in line for line in after)
        self.assertIn(f"changed {changed} records before that", message)
        self.assertLess(changed, self.sites)
        self.assertEqual(after[changed:], before[changed:])
        self.assertEqual([line.replace(b"changed", b"-      ") for line in after], before)
        self.make_room()
        self.done(*change)
        self.assertEqual(self.path("site").read_bytes().count(b"changed"), self.sites)

    def damage(self):
        """A line of another width in the middle."""
        path = self.path("site")
        length = len(record("site", ("S0",)))
        content = path.read_bytes()
        path.write_bytes(content[:length * 10] + b"torn\n" + content[length * 10:])

    def test_a_repair_waits_for_room(self):
        self.damage()
        self.fill()
        before = self.content()
        result = run("check", "--repair", self.database)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(FULL, (result.stdout + result.stderr).decode())
        self.assertEqual(self.content()["db.site"], before["db.site"], "what can't be taken out in safety stays in")
        self.make_room()
        repaired = run("check", "--repair", self.database)
        self.assertNotIn(FULL, (repaired.stdout + repaired.stderr).decode())
        self.assertEqual(run("check", self.database).returncode, 0)
        kept = b"".join(path.read_bytes() for path in self.folder.iterdir() if path.name not in ("db.site", "filler"))
        self.assertIn(b"torn", kept, "it is kept in a file of its own")

    def test_a_read_only_disk(self):
        self.done("mark", self.table("site"), "--where", "sta=='S3'")
        changes = [(["set", self.table("site"), "--where", "1==1", "note=changed"], b""),
                   (["mark", self.table("site"), "--where", "1==1"], b""),
                   (["add", self.table("site"), "--format", "csv"], b"sta\nNEW\n"),
                   (["crunch", self.table("site")], b""),
                   (["create", self.folder / "new", "--schema", "tiny"], b""),
                   (["add", self.table("lonely"), "--format", "csv"], b"note\nthe first\n")]
        self.set_read_only(True)
        for change, stdin in changes:
            self.refused(READ_ONLY, *change, stdin=stdin)
        read = self.output("select", self.table("site"), "--subset", "sta=='S7'", "--fields", "lat")
        self.assertEqual(read.strip(), "1.0000", "it is read all the same")
        self.set_read_only(False)
        for change, stdin in changes:
            self.done(*change, stdin=stdin)

    def test_a_read_only_disk_is_not_repaired(self):
        self.damage()
        self.set_read_only(True)
        before = self.content()
        result = run("check", "--repair", self.database)
        self.assertNotEqual(result.returncode, 0)
        self.assertIn(READ_ONLY, (result.stdout + result.stderr).decode())
        self.assertEqual(self.content(), before)
        self.set_read_only(False)
        run("check", "--repair", self.database)
        self.assertEqual(run("check", self.database).returncode, 0)


if __name__ == "__main__":
    unittest.main()
