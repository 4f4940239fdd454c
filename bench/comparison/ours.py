"""Ours: the operations, a click on a header, and how soon operations stop."""
from comparison.results import lines_of, say

TABLES = ("arrival", "assoc", "origin", "site")


def read_through(path):
    """So that the file is in the page cache."""
    with open(path, "rb") as file:
        while file.read(1 << 24):
            pass


def warm(path, tables=TABLES):
    for table in tables:
        read_through(f"{path}.{table}")


def measure_operations(programs, path, out, runs, results, names):
    say(f"ours, {path.name}")
    warm(path)
    program = programs / "operations_bench"
    results.add(lines_of([program, path, "--out", out, "--runs", runs, *names]))
    for name in names:
        for run in range(0 if name in ("open", "scroll") else runs):
            unchecked = ["--unchecked"] if run > 0 else []
            results.add(lines_of([program, path, "--out", out, "--first", *unchecked, name]))


def measure_progress(programs, path, out, results, names):
    say(f"progress and cancel, {path.name}")
    for name in names:
        results.add(lines_of([programs / "operations_bench", path, "--out", out, "--progress", name]))


def measure_header_sort(programs, path, runs, results):
    program = programs / "header_sort_bench"
    results.add(lines_of([program, f"{path}.arrival", "time", "--runs", runs]))
    for _ in range(runs):
        results.add(lines_of([program, f"{path}.arrival", "time", "--first"]))
