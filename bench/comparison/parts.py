"""The parts that scripts/bench measures, each begun and kept on its own."""
import os
import shutil
import subprocess
from functools import cached_property
from typing import Callable, NamedTuple

import large_table
from comparison import browsers, duckdb_engine, ours, sheet, sqlite_engine, system_tools, window
from comparison.operations import NAMES, WRITING
from comparison.results import lines_of, say


class Measuring:
    """What the parts share: the programs, the data, the results, and how many runs are wanted."""

    def __init__(self, arguments, data, out, results):
        self.programs, self.quick = arguments.programs, arguments.quick
        self.rows, self.runs, self.csv_runs = arguments.rows, arguments.runs, arguments.csv_runs
        self.others_runs = min(arguments.runs, arguments.others_runs)
        self.sheet_runs = min(arguments.runs, arguments.sheet_runs)
        self.browser_runs = min(arguments.runs, arguments.browser_runs)
        self.data, self.out, self.results = data, out, results
        self.duckdb = arguments.others / "duckdb.mjs"
        self.sizes = sizes_of(self.rows)

    def catalogue(self, rows):
        path = self.data / f"catalogue{rows}"
        done = self.data / f"catalogue{rows}.done"
        if not done.exists():
            say(f"generating {rows:,} arrivals")
            subprocess.run([self.programs / "generate_catalogue", str(rows), path], check=True)
            done.touch()
        return path

    @property
    def path(self):
        return self.catalogue(self.rows)

    def csv_of(self, rows, folder):
        folder.mkdir()
        say(f"writing {rows:,} arrivals as CSV")
        subprocess.run([self.programs / "operations_bench", self.catalogue(rows), "--out", folder, "--first", "csv_files"],
                       check=True, stdout=subprocess.DEVNULL)
        return folder

    @cached_property
    def csv(self):
        """A folder with all rows in CSV files."""
        return self.csv_of(self.rows, self.out / "csv")


def sizes_of(rows):
    return [rows // 10, rows // 5, rows // 2, rows]


def measure_operations(m):
    path = m.path
    ours.warm(path, ("arrival",))
    limits = {line["limit"]: line["per_second"] for line in lines_of([m.programs / "limits", f"{path}.arrival", "2"])}
    m.results.set_figures(limits=limits, table_sizes={table: os.path.getsize(f"{path}.{table}") for table in ours.TABLES})
    ours.measure_operations(m.programs, path, m.out, m.runs, m.results, ["open", "scroll", *NAMES])
    ours.measure_header_sort(m.programs, path, m.runs, m.results)
    duckdb_engine.measure_loaded(m.duckdb, m.csv, m.rows, m.runs, m.results, NAMES)


def measure_growth(m):
    for size in m.sizes[:-1]:
        ours.measure_operations(m.programs, m.catalogue(size), m.out, m.runs, m.results, NAMES)


def measure_progress(m):
    for size in (m.sizes[0], m.sizes[-1]):
        ours.measure_progress(m.programs, m.catalogue(size), m.out, m.results, NAMES)


def measure_window(m):
    window.measure_view(m.programs, m.path, m.quick, m.results)
    window.measure_copying(m.programs, m.path, m.runs, m.results)
    window.measure_requests(m.programs, m.runs, m.results)
    window.measure_opening(m.programs, {size: m.catalogue(size) for size in (window.FEW, m.rows)}, m.runs, m.results)


def measure_sheet(m):
    rows = min(m.rows, sheet.MOST_ROWS)
    sheet.measure_command_line(m.programs, m.catalogue(rows), m.out, rows, m.sheet_runs, m.results)
    sheet.measure_save_as(m.programs, m.catalogue(rows), m.out, rows, m.sheet_runs, m.results)


def measure_browsers(m, rows):
    missing = browsers.missing()
    if missing:
        say(f"DB Browser for SQLite is not measured: this needs {missing}")
        m.results.set_figures(missing=missing)
        return
    folder = m.out / "browsers"
    csv = m.csv if rows == m.rows else m.csv_of(rows, folder)
    database = m.out / "arrivals.sqlite"
    browsers.make_database(csv, database)
    browsers.measure_browsers(m.programs, m.catalogue(rows), database, m.browser_runs, m.data / "pictures", m.results)
    database.unlink()
    shutil.rmtree(folder, ignore_errors=True)


def measure_others(m):
    """All engines, on fewer rows."""
    rows, small = m.sizes[0], m.out / "small"
    m.csv_of(rows, small)
    duckdb_engine.measure_loaded(m.duckdb, small, rows, m.runs, m.results, NAMES)
    say("SQLite")
    sqlite_engine.measure_sqlite(small, rows, m.others_runs, m.results)
    say("awk, sort, join")
    system_tools.measure_tools(m.catalogue(rows), small, rows, m.others_runs, m.results)
    shutil.rmtree(small)


def measure_csv(m):
    for _ in range(m.csv_runs):
        duckdb_engine.measure_csv(m.duckdb, m.csv, m.rows, m.results, [name for name in NAMES if name not in WRITING])


def measure_large(m):
    rows = large_table.ROWS // 100 if m.quick else large_table.ROWS
    megabytes = large_table.MEGABYTES // (10 if m.quick else 1)
    m.results.set_figures(lines=list(large_table.measure(m.programs, m.data, rows, megabytes)))


class Part(NamedTuple):
    name: str
    text: str
    measure: Callable
    runs: Callable  # of a Measuring
    by_default: bool = True


PARTS = [
    Part("operations", "operations, ours and DuckDB's", measure_operations, lambda m: m.runs),
    Part("window", "the window, requests", measure_window, lambda m: m.runs),
    Part("browsers", "DB Browser for SQLite", lambda m: measure_browsers(m, m.sizes[0]), lambda m: m.browser_runs),
    Part("many-browsers", "the same, all rows", lambda m: measure_browsers(m, m.rows), lambda m: m.browser_runs,
         by_default=False),
    Part("growth", "operations on fewer rows", measure_growth, lambda m: m.runs),
    Part("progress", "progress and cancel", measure_progress, lambda m: 1),
    Part("others", "SQLite, awk, sort, join", measure_others, lambda m: m.others_runs),
    Part("sheet", "the spreadsheet", measure_sheet, lambda m: m.sheet_runs),
    Part("large", "100,000,000 rows in less memory", measure_large, lambda m: 1, by_default=False),
    Part("csv", "DuckDB from CSV files", measure_csv, lambda m: m.csv_runs),
]
