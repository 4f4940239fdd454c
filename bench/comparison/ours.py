"""Ours: the operations, a click on a header, spreadsheets, the window, and how soon operations stop."""
import os
import subprocess
import time

from comparison.results import lines_of, say

TABLES = ("arrival", "assoc", "origin", "site")
SHEET_ROWS = 1_000_000  # a sheet has room for 1,048,576


def warm(path, tables=TABLES):
    """Reads the files so that they are in the page cache."""
    for table in tables:
        with open(f"{path}.{table}", "rb") as file:
            while file.read(1 << 24):
                pass


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


def measure_sheet(programs, path, out, rows, runs, results):
    """The command line's spreadsheet of all arrivals."""
    say(f"a spreadsheet, {path.name}")
    sheet = out / "arrivals.xlsx"
    for _ in range(runs):
        start = time.perf_counter()
        subprocess.run([programs / "ovdb", "select", f"{path}.arrival", "--force", "--output", sheet], check=True)
        results.add([{"engine": "orvane", "operation": "export_xlsx", "mode": "first", "rows": rows,
                      "ms": 1e3 * (time.perf_counter() - start), "bytes": os.path.getsize(sheet)}])
        sheet.unlink()


def measure_window(programs, path, quick):
    """What view_bench says, as it says it."""
    say("the table view")
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    frames = "100" if quick else "600"
    return lines_of([programs / "view_bench", "--json", "--frames", frames, f"{path}.arrival"], environment)
