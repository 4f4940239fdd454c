"""The window: pages, scrolling, selecting, menus, copying, opening, and what requests cost."""
import json
import os
import statistics

import open_window
from comparison.results import lines_of, lines_within, run, say

JOINED = "assoc,origin,site"  # to arrival: four tables
KINDS = {"base": [], "sorted": ["--sort", "time"], "joined": ["--join", JOINED]}
COPIED = (50_000, 25)  # rows, columns
FEW = 1000  # rows, to open a table of which is compared with opening the large one
MOST_SECONDS = 75  # for a kind of table: what hasn't been measured then isn't
OFFSCREEN = {"QT_QPA_PLATFORM": "offscreen"}


def measure_view(programs, path, quick, results):
    """What view_bench says of each kind of table, and of the toolkit's own view."""
    say("the table view")
    environment = dict(os.environ, **OFFSCREEN)
    frames = 200 if quick else 1800  # a minute of them
    lines, unfinished = [], []
    for kind in ("toolkit", *KINDS):
        command = [programs / "view_bench", "--json", "--frames", frames, "--only", kind, "--join", JOINED]
        measured, finished = lines_within(MOST_SECONDS, [*command, f"{path}.arrival"], environment)
        lines += measured
        if not finished:
            unfinished.append(kind)
    results.set_figures(view=lines, view_unfinished=unfinished, frames=frames)


def measure_copying(programs, path, runs, results):
    environment = dict(os.environ, **OFFSCREEN)
    copying = {}
    for kind, options in KINDS.items():
        taken = [lines_of([programs / "taking_along_bench", "--json", *options, f"{path}.arrival", "copy", *COPIED],
                          environment) for _ in range(runs)]
        named = [{line["what"]: line["value"] for line in lines} for lines in taken]
        copying[kind] = {what: statistics.median(one[what] for one in named) for what in named[0]}
    results.set_figures(copying=copying)


def measure_requests(programs, runs, results):
    """Microseconds of the processor, by request."""
    say("requests")
    said = run([programs / "requests_bench", "--benchmark_format=json", f"--benchmark_repetitions={runs}",
                "--benchmark_min_time=0.1"])
    micro = {"ns": 1e-3, "us": 1, "ms": 1e3, "s": 1e6}
    times = {}
    for line in json.loads(said)["benchmarks"]:
        if line["run_type"] == "iteration":
            times.setdefault(line["run_name"].split("/")[0], []).append(line["cpu_time"] * micro[line["time_unit"]])
    results.set_figures(requests={name: statistics.median(taken) for name, taken in times.items()})


def measure_opening(programs, tables, runs, results):
    """`tables` by their rows, few first."""
    say("opening a window")
    figures = open_window.measure(programs, {rows: f"{path}.arrival" for rows, path in tables.items()}, runs)
    results.set_figures(opening=[[program, rows, *medians] for (program, rows), medians in figures.items()])
