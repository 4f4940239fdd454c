"""Runs a program, and says what it took."""
import os
import subprocess
import sys
import time
from typing import NamedTuple

# A process begins with its parent's memory as its own highest, which is why the parent is a small one.
LAUNCHER = """
import os, sys
process = os.posix_spawn(sys.argv[2], sys.argv[2:], os.environ)
_, status, use = os.wait4(process, 0)
os.write(int(sys.argv[1]), f"{use.ru_utime + use.ru_stime} {use.ru_maxrss}".encode())
sys.exit(os.waitstatus_to_exitcode(status) != 0)
"""


class Taken(NamedTuple):
    seconds: float
    processor: float  # seconds, user and system
    mebibytes: float  # at its highest
    printed: str


def run_alone(command, enter=None):
    """`enter` is called in the new process; fails where the program does."""
    end, told = os.pipe()
    start = time.perf_counter()
    with os.fdopen(end) as reader:
        launcher = [sys.executable, "-S", "-c", LAUNCHER, str(told), *map(str, command)]
        done = subprocess.run(launcher, stdout=subprocess.PIPE, text=True, pass_fds=[told], preexec_fn=enter)
        seconds = time.perf_counter() - start
        os.close(told)
        if done.returncode != 0:
            raise SystemExit(f"{command[0]} has failed")
        processor, kibibytes = reader.read().split()
    return Taken(seconds, float(processor), int(kibibytes) / 1024, done.stdout)
