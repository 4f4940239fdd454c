#!/usr/bin/env python3
"""Several programs that add to one table with checked adds at the same time: processor time per record.

    bench/checked_adds.py --ovdb build/dev/bin/ovdb [--records 100000] [--adds 200] [--writers 8] [--rounds 3]
"""

import argparse
import os
import pathlib
import resource
import statistics
import subprocess
import tempfile
import time

SCHEMA = """\
name: adds
attributes:
  id: {type: integer, width: 10, format: "%10d", null: "-1"}
  text: {type: string, width: 80, format: "%-80s", null: "-"}
relations:
  many: {fields: [id, text], primary: [id]}
"""


def one_round(arguments):
    with tempfile.TemporaryDirectory() as folder:
        database = pathlib.Path(folder, "db")
        (database.parent / "adds.yaml").write_text(SCHEMA)
        database.write_text("schema: adds\n")
        with open(f"{database}.many", "w") as table:
            for number in range(arguments.records):
                table.write(f"{number:10d} {'a record':<80s}\n")
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        begin = time.monotonic()
        writers = [subprocess.Popen([arguments.ovdb, "add", f"{database}.many", "--checked", "--format", "csv"],
                                    stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
                   for _ in range(arguments.writers)]
        # Each in its turn, so that every writer meets what the others added.
        record_size = 92
        size = arguments.records * record_size
        for writer in writers:
            writer.stdin.write(b"id,text\n")
        for number in range(arguments.adds):
            for index, writer in enumerate(writers):
                writer.stdin.write(b"%d,new\n" % (arguments.records + number * arguments.writers + index))
                writer.stdin.flush()
                size += record_size
                while os.stat(f"{database}.many").st_size < size:
                    time.sleep(0.0002)
        for writer in writers:
            writer.stdin.close()
            if writer.wait() != 0:
                raise SystemExit("a writer failed")
        elapsed = time.monotonic() - begin
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        lines = pathlib.Path(f"{database}.many").read_bytes().count(b"\n")
        if lines != arguments.records + arguments.adds * arguments.writers:
            raise SystemExit(f"{lines} records are there")
        return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, elapsed


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ovdb", required=True)
    parser.add_argument("--records", type=int, default=100_000)
    parser.add_argument("--adds", type=int, default=200, help="by each writer")
    parser.add_argument("--writers", type=int, default=8)
    parser.add_argument("--rounds", type=int, default=3)
    arguments = parser.parse_args()
    found = [one_round(arguments) for _ in range(arguments.rounds)]
    adds = arguments.adds * arguments.writers
    print(f"{arguments.writers} writers, {adds} checked adds to {arguments.records} records: "
          f"{1000 * statistics.median(cpu for cpu, _ in found) / adds:.2f} ms of processor time an add, "
          f"{1000 * statistics.median(wall for _, wall in found) / adds:.2f} ms elapsed (median of {len(found)}, "
          f"load {os.getloadavg()[0]:.1f})")


if __name__ == "__main__":
    main()
