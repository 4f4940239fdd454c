#!/usr/bin/env python3
"""Processor time and memory that ovedit spends to open a table into a painted window, by number of rows.

    bench/open_window.py BUILD [--rows 1000,10000000] [--runs 5] [--data FOLDER]

BUILD is a build tree of the preset `release`. The tables are generated once into FOLDER (default: a temporary
folder; ten million rows take 2.4 GB). Each run starts ovedit anew on a virtual screen of the toolkit
(QT_QPA_PLATFORM=offscreen), and the same number of rows in the toolkit's own view over a model that costs nothing,
whose growth is what the toolkit itself spends on its headers. Medians over the runs, taken in turn.
"""

import argparse
import os
import statistics
import subprocess
import tempfile
from pathlib import Path


def measured(command, environment):
    """User + system seconds and peak memory in MiB of one run of a command."""
    process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))} ended with {process.returncode}")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def measure(bin_folder, tables, runs):
    """Medians of seconds and MiB, by program and rows: `ovedit` shows the tables, by their rows, and `bare view` as many
    rows that cost nothing."""
    figures = {}
    with tempfile.TemporaryDirectory() as temporary:
        home = Path(temporary) / "home"
        home.mkdir()
        picture = Path(temporary) / "window.png"
        environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", HOME=str(home), XDG_CONFIG_HOME=str(home / "config"))
        for _ in range(runs):
            for rows, table in tables.items():
                figures.setdefault(("ovedit", rows), []).append(
                    measured([bin_folder / "ovedit", "--screenshot", picture, table], environment))
                if picture.stat().st_size == 0:
                    raise SystemExit("ovedit wrote an empty picture")
                figures.setdefault(("bare view", rows), []).append(
                    measured([bin_folder / "bare_view", str(rows), "26"], environment))
    return {key: [statistics.median(column) for column in zip(*taken)] for key, taken in figures.items()}


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("build", type=Path)
    arguments.add_argument("--rows", default="1000,10000000")
    arguments.add_argument("--runs", type=int, default=5)
    arguments.add_argument("--data", type=Path)
    options = arguments.parse_args()
    sizes = [int(rows) for rows in options.rows.split(",")]
    temporary = tempfile.TemporaryDirectory()
    data = options.data or Path(temporary.name)
    data.mkdir(parents=True, exist_ok=True)
    bin_folder = options.build.resolve() / "bin"
    for rows in sizes:
        if not (data / f"rows{rows}.origin").exists():
            subprocess.run([bin_folder / "generate", str(rows), data / f"rows{rows}"], check=True)

    medians = measure(bin_folder, {rows: data / f"rows{rows}.origin" for rows in sizes}, options.runs)
    print(f"{'program':<12}{'rows':>12}{'cpu s':>10}{'memory MiB':>12}   (medians of {options.runs})")
    for (program, rows), (seconds, mebibytes) in medians.items():
        print(f"{program:<12}{rows:>12}{seconds:>10.3f}{mebibytes:>12.1f}")
    small, large = sizes[0], sizes[-1]
    header_cpu, header_memory = (medians["bare view", large][i] - medians["bare view", small][i] for i in (0, 1))
    cpu = medians["ovedit", large][0]
    base = medians["ovedit", small][0]
    print(f"toolkit's own headers: {header_cpu:.3f} s, {header_memory:.1f} MiB more for {large} rows")
    print(f"ovedit, {large} against {small} rows: {cpu / base:.2f} x the processor time, "
          f"{(cpu - header_cpu) / base:.2f} x without the toolkit's headers; "
          f"{medians['ovedit', large][1] - medians['ovedit', small][1] - header_memory:+.1f} MiB besides them")


if __name__ == "__main__":
    main()
