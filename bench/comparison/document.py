"""The document that is written."""
import datetime
import os
import platform

from comparison.operations import (AGAIN_LIMIT, CSV_LIMIT, MACHINE_LIMIT, OPERATIONS, PROGRESS_LIMIT_MS,
                                   STOP_LIMIT_MS, floors)

LIMITS = [
    ("read", "read from the page cache", "GB", 1e9), ("scan", "read from memory", "GB", 1e9),
    ("decode", "decode a time", "million", 1e6), ("radix", "sort keys of 46 bits with their rows", "million", 1e6),
    ("probe", "look up in a table of ten million", "million", 1e6),
    ("scatter", "put in place in such a table", "million", 1e6),
]


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        model = next((line.split(":")[1].strip() for line in info if line.startswith("model name")),
                     platform.processor())
    with open("/proc/meminfo", encoding="utf-8") as info:
        memory = round(int(info.readline().split()[1]) / (1 << 20))
    return f"{model}, {os.cpu_count()} processors, {memory} GB of memory, Linux {platform.release().split('-')[0]}"


def number(value):
    if value is None:
        return "–"
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}" if value >= 1 else f"{value:.2f}"


def ratio(value, other, limit=None):
    if not value or not other:
        return "–"
    part = value / other
    text = f"{part:.2f}" if part >= 0.095 else f"{part:.3f}"
    return text if limit is None or part <= limit else f"**{text}**"


def within(value, limit):
    text = number(value)
    return text if value is None or value <= limit else f"**{text}**"


def table(head, rows):
    cells = [head, ["---"] * len(head), *rows]
    return ["| " + " | ".join(line) + " |" for line in cells]


class Document:
    """`figures` has what was gathered beside the results: see measure() in scripts/bench."""

    def __init__(self, results, figures, notes):
        self.results = results
        self.figures = figures
        self.notes = notes

    def text(self):
        parts = [self.head(), self.operations(), self.further(), self.window(), self.others(), self.growth(),
                 self.progress(), self.machine_limits()]
        if self.notes.exists():
            parts.append([self.notes.read_text(encoding="utf-8").rstrip()])
        return "\n\n".join("\n".join(part) for part in parts if part) + "\n"

    def median(self, engine, mode, name, rows=None, what="ms"):
        return self.results.median(engine, mode, name, rows or self.figures.rows, what)

    def head(self):
        figures, versions = self.figures, self.results.versions
        if figures.runs == 1:
            taken = "in a quick run: every figure is of a single run."
        else:
            taken = f"; every figure is the median of {figures.runs} runs" + self.fewer_runs()
        return ["# Benchmarks", "", "Written by `scripts/bench`" + (" " if taken[0] != ";" else "") + taken,
                "All engines ran on the same generated rows one after the other, and " + self.agreement(), "",
                *table(["", ""], [
                    ["when", f"{datetime.date.today()}, load {figures.load} when it began"],
                    ["machine", machine()],
                    ["rows", f"{figures.rows:,} arrivals, {figures.rows // 10 * 9:,} assocs, {figures.rows // 10:,} origins"],
                    ["DuckDB", f"{versions.get('duckdb', '–')}, two threads"],
                    ["SQLite", versions.get("sqlite", "–")]]), "",
                "\"Again\": the columns are decoded. \"First\": a new process, the file in the page cache. DuckDB's table",
                "is loaded and warm, in its process; \"CSV\" is DuckDB reading the same rows from CSV files for each",
                "operation. The floor is what the machine needs for the steps without which the operation can't be done,",
                "by the figures at the end. Times are milliseconds on the clock; \"CPU\" compares processor times, which",
                "other work on the machine lengthens less. Ratios that are not what was aimed at are bold."]

    def agreement(self):
        differences = self.results.differences
        return f"**their answers differ**: {'; '.join(differences)}." if differences else "gave the same answers."

    def fewer_runs(self):
        others = [("DuckDB's from CSV files", self.results.count("duckdb-csv", "again", "sort_time", self.figures.rows)),
                  ("SQLite's", self.results.count("sqlite", "again", "sort_time", self.figures.small)),
                  ("those of awk, sort and join", self.results.count("tools", "again", "sort_time", self.figures.small))]
        fewer = [f"{who} of {runs}" for who, runs in others if 0 < runs < self.figures.runs]
        return f" ({', '.join(fewer)})." if fewer else "."

    def operations(self):
        first_floor, again_floor = floors(self.figures.limits, self.figures.table_sizes, self.figures.rows)
        again_rows, first_rows = [], []
        for name, text, first_limit in OPERATIONS:
            again, first = self.median("orvane", "again", name), self.median("orvane", "first", name)
            duck, csv = self.median("duckdb", "again", name), self.median("duckdb-csv", "again", name)
            cpu = self.median("orvane", "again", name, what="cpu_ms")
            duck_cpu = self.median("duckdb", "again", name, what="cpu_ms")
            again_rows.append([text, number(again), number(duck), ratio(again, duck, AGAIN_LIMIT), ratio(cpu, duck_cpu),
                               number(again_floor.get(name)), ratio(again, again_floor.get(name), MACHINE_LIMIT)])
            first_rows.append([text, number(first), ratio(first, duck, first_limit),
                               number(first_limit) if first_limit else "–", number(csv), ratio(first, csv, CSV_LIMIT),
                               number(first_floor.get(name)), ratio(first, first_floor.get(name), MACHINE_LIMIT)])
        return [f"## {self.figures.rows:,} arrivals, again", "",
                f"Aimed at: at most {AGAIN_LIMIT} × DuckDB, {MACHINE_LIMIT} × the floor.", "",
                *table(["", "again", "DuckDB", "× DuckDB", "CPU", "floor", "× floor"], again_rows), "",
                f"## {self.figures.rows:,} arrivals, first", "",
                f"Aimed at: at most so many times DuckDB's loaded table, {CSV_LIMIT} × CSV, {MACHINE_LIMIT} × the floor.", "",
                *table(["", "first", "× DuckDB", "aim", "CSV", "× CSV", "floor", "× floor"], first_rows)]

    def further(self):
        peak = self.results.most("orvane", "first", self.figures.rows, "peak_mb")
        sheet = self.median("orvane", "first", "export_xlsx", self.figures.sheet_rows)
        return ["## Beside them", "", *table(["", "ms"], [
            ["a click on the header of time, in the model: again", number(self.median("orvane", "again", "header_sort"))],
            ["the same, first", number(self.median("orvane", "first", "header_sort"))],
            ["opening the database and counting the arrivals", number(self.median("orvane", "again", "open"))],
            ["1,000 pages of 48 × 24 cells at random rows", number(self.median("orvane", "again", "scroll"))],
            [f"a spreadsheet of {self.figures.sheet_rows:,} arrivals, by `ovdb`", number(sheet)]]), "",
            f"Most memory of a process that did one operation first: {peak:,} MB."]

    def window(self):
        if not self.figures.window:
            return []
        rows = []
        for line in self.figures.window:
            what = {key: value for key, value in line.items() if key not in ("name", "rows", "columns", "frames")}
            rows.append([line["name"], ", ".join(f"{key} {number(value)}" for key, value in what.items())])
        return ["## The table view", "",
                f"Of the table of {self.figures.rows:,} arrivals (`bench/view_bench`); processor times in milliseconds,",
                "medians unless the name says otherwise.", "", *table(["", ""], rows)]

    def others(self):
        engines = [("orvane", "again"), ("orvane", "first"), ("duckdb", "again"), ("sqlite", "again"),
                   ("sqlite-indexed", "again"), ("tools", "again")]
        rows = [[text, *(number(self.median(engine, mode, name, self.figures.small)) for engine, mode in engines)]
                for name, text, _ in OPERATIONS]
        return [f"## {self.figures.small:,} arrivals, with the others", "",
                *table(["", "ours again", "ours first", "DuckDB", "SQLite", "SQLite with indexes", "awk, sort, join"], rows)]

    def growth(self):
        def exponent(name, mode):
            growth = self.results.growth(self.figures.sizes, name, mode)
            return "–" if growth is None else f"{growth:.2f}"

        return ["## How the cost grows", "",
                "The exponent of the rows, fitted over " + ", ".join(f"{size:,}" for size in self.figures.sizes) +
                " arrivals.", "",
                *table(["", "again", "first"], [[text, exponent(name, "again"), exponent(name, "first")]
                                                for name, text, _ in OPERATIONS])]

    def progress(self):
        rows = []
        for size in self.figures.sizes:
            longest = self.results.most("orvane", "progress", size, "ms")
            if longest is not None:
                rows.append([f"{size:,}", within(longest, PROGRESS_LIMIT_MS),
                             within(self.results.most("orvane", "progress", size, "stop_ms"), STOP_LIMIT_MS)])
        if not rows:
            return []
        return ["## Progress and cancel", "",
                "Of all operations, in ms: the longest time that the progress hook was not called, begin and end included",
                f"(at most {PROGRESS_LIMIT_MS}), and the longest that an operation took to return when told to stop, at any of",
                f"the hook's first 10 calls (at most {STOP_LIMIT_MS}).", "",
                *table(["arrivals", "without a call", "to stop"], rows)]

    def machine_limits(self):
        return ["## What the machine can do", "", "Two threads, the best of five (`bench/limits.cpp`).", "",
                *table(["", "a second"], [[text, f"{self.figures.limits[name] / unit:,.1f} {shown}"]
                                          for name, text, shown, unit in LIMITS])]
