"""Runs the examples of docs/ovdb.md and compares what they write. With --write puts that into the page instead."""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from program import OVDB, SOURCE, environment

PAGE = SOURCE / "docs/ovdb.md"
BLOCK = re.compile(r"(?<=```console\n)(.*?)(?=```)", re.S)


def written(command, scratch):
    path = f"{Path(OVDB).parent}:{os.environ['PATH']}"
    result = subprocess.run(["bash", "-c", command], cwd=SOURCE, env=environment(PATH=path, TMP=scratch), text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return result.stdout


def renewed(block):
    """A block with what its commands write now."""
    commands = [line for line in block.splitlines() if line.startswith("$ ")]
    with tempfile.TemporaryDirectory(prefix="ovdb-test-") as scratch:
        return "".join(f"{command}\n{written(command[2:], scratch)}" for command in commands)


class Documentation(unittest.TestCase):
    maxDiff = None

    def test_examples_write_what_the_page_says(self):
        blocks = BLOCK.findall(PAGE.read_text())
        self.assertGreater(sum(block.count("$ ovdb ") for block in blocks), 5)
        for block in blocks:
            self.assertEqual(block, renewed(block))


if __name__ == "__main__":
    if "--write" in sys.argv:
        PAGE.write_text(BLOCK.sub(lambda match: renewed(match[1]), PAGE.read_text()))
    else:
        unittest.main()
