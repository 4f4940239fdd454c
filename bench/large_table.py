#!/usr/bin/env python3
"""Opens, counts, finds and subsets a table that is larger than the memory that may be used for it.

    bench/large_table.py build/release [ROWS] [MEGABYTES]

100,000,000 rows of 24 bytes in 1,200 MB unless said otherwise, the page cache included: the programs run in a memory
control group, which takes an administrator; where none can be made they run without a limit, and the output says so. Then
the same in the window's table view (large_view_bench): random rows, the last one, finding it, a subset. The table lies in
$ORVANE_BENCH_DATA, or in a folder that goes away. Prints a line of JSON a step.
"""
import contextlib
import json
import os
import pathlib
import shutil
import sys
import tempfile

from comparison.alone import run_alone

SCHEMA = """name: narrow
attributes:
  id: {type: integer, width: 9, format: "%9d", null: "-1"}
  value: {type: real, width: 9, format: "%9.3f", null: "-999.000"}
  word: {type: string, width: 4, format: "%-4s", null: "-"}
relations:
  many: {fields: [id, value, word]}
"""
WORDS = ("AAK", "KIV", "ABKT", "-", "B", "b", "TIXI")
BLOCK = 100_000
ROWS = 100_000_000
MEGABYTES = 1200


def generate(folder, rows):
    """Ids in order; of the values and words the same in each block."""
    (folder / "narrow.yaml").write_text(SCHEMA)
    (folder / "quakes").write_text("schema: narrow\ndbpath: [.]\nlocks: local\n")
    ends = [f" {i * 7919 % 700_001 / 8:9.3f} {WORDS[i * 31 % len(WORDS)]:<4}\n" for i in range(BLOCK)]
    with open(folder / "quakes.many", "w", encoding="ascii") as file:
        for first in range(0, rows, BLOCK):
            file.write("".join(f"{first + i:9d}{end}" for i, end in enumerate(ends[:rows - first])))
    (folder / "rows").write_text(str(rows))


@contextlib.contextmanager
def limited(megabytes):
    """A control group of so much memory to run in; none where that is not to be had."""
    for parent, limit in (("/sys/fs/cgroup/memory", "memory.limit_in_bytes"), ("/sys/fs/cgroup", "memory.max")):
        group = pathlib.Path(parent) / f"orvane-bench-{os.getpid()}"
        try:
            group.mkdir()
        except OSError:
            continue
        try:
            (group / limit).write_text(str(megabytes << 20))
            yield group
            return
        except OSError:
            continue
        finally:
            group.rmdir()
    yield None


def run(program, group, arguments):
    """Seconds, the process's memory at its highest in MB, and what it printed."""
    def enter():
        if group:
            (group / "cgroup.procs").write_text(str(os.getpid()))

    taken = run_alone([program, *arguments], enter)
    return taken.seconds, round(taken.mebibytes), taken.printed.strip().splitlines()


def commands(program, table, rows, group):
    steps = [
        ("open and count", ["select", table, "--count"], str(rows)),
        ("subset of a number", ["select", table, "--subset", "value < 1000", "--count"], None),
        ("subset of a text", ["select", table, "--subset", "word == 'AAK'", "--count"], None),
        ("find the last row", ["select", table, "--subset", f"id == {rows - 1}", "--no-header"], None),
    ]
    for name, arguments, expected in steps:
        taken, most_mb, lines = run(program, group, arguments)
        if expected and lines[-1] != expected:
            raise SystemExit(f"{name}: {lines[-1]}, not {expected}")
        yield {"step": name, "ms": round(1e3 * taken, 1), "most_mb": most_mb, "answer": lines[-1][:60]}


def measure(bin_folder, data, rows, megabytes):
    """Lines of what there is, of the command line's steps, and of the window's."""
    folder = data / f"narrow{rows}"
    if not (folder / "rows").exists():
        folder.mkdir(parents=True, exist_ok=True)
        generate(folder, rows)
    os.environ["ORVANE_SCHEMA_PATH"] = str(folder)
    os.environ["QT_QPA_PLATFORM"] = "offscreen"
    table = folder / "quakes.many"
    with limited(megabytes) as group:
        yield {"rows": rows, "table_mb": os.path.getsize(table) >> 20, "limit_mb": megabytes if group else None}
        yield from commands(bin_folder / "ovdb", table, rows, group)
        _, _, lines = run(bin_folder / "large_view_bench", group, [table, "id", "word == 'AAK'"])
        yield from ({**json.loads(line), "window": True} for line in lines)


def main():
    if len(sys.argv) < 2:
        raise SystemExit(__doc__)
    rows = int(sys.argv[2]) if len(sys.argv) > 2 else ROWS
    megabytes = int(sys.argv[3]) if len(sys.argv) > 3 else MEGABYTES
    kept = os.environ.get("ORVANE_BENCH_DATA")
    data = pathlib.Path(kept or tempfile.mkdtemp(prefix="orvane-bench-"))
    try:
        for line in measure(pathlib.Path(sys.argv[1]).resolve() / "bin", data, rows, megabytes):
            print(json.dumps(line), flush=True)
    finally:
        if not kept:
            shutil.rmtree(data)


if __name__ == "__main__":
    main()
