"""The document that is written."""
import os
import platform

from comparison.browsers_section import browsers_section
from comparison.formatting import number, ratio, table, within
from comparison.operations import (AGAIN_LIMIT, CSV_LIMIT, FLOORS, MACHINE_LIMIT, OPERATIONS, PROGRESS_LIMIT_MS,
                                   STOP_LIMIT_MS, floors)
from comparison.parts import PARTS, sizes_of
from comparison.window_section import window_section

LIMITS = [
    ("read", "read from the page cache", "GB", 1e9), ("scan", "read from memory", "GB", 1e9),
    ("decode", "decode a time", "million", 1e6), ("radix", "sort keys of 46 bits with their rows", "million", 1e6),
    ("probe", "look up in a table of ten million", "million", 1e6),
    ("scatter", "put in place in such a table", "million", 1e6),
    ("pick", "rows of one of 500 codes found", "million", 1e6),
    ("sift", "rows found by two numbers of 8 bytes", "million", 1e6),
    ("spread", "rows put in place by 500 codes", "million", 1e6),
    ("mark", "keys put into a set of bits", "million", 1e6),
    ("lack", "keys looked for in such a set", "million", 1e6),
    ("meet", "rows joined by a code and a range", "million", 1e6),
]


def machine():
    with open("/proc/cpuinfo", encoding="utf-8") as info:
        model = next((line.split(":")[1].strip() for line in info if line.startswith("model name")),
                     platform.processor())
    with open("/proc/meminfo", encoding="utf-8") as info:
        memory = round(int(info.readline().split()[1]) / (1 << 20))
    return f"{model}, {os.cpu_count()} processors, {memory} GB of memory, Linux {platform.release().split('-')[0]}"


class Document:
    """A section is left out where its part was not measured."""

    def __init__(self, results, rows, notes):
        self.results = results
        self.rows = rows
        self.sizes = sizes_of(rows)
        self.small = self.sizes[0]
        self.notes = notes

    def text(self):
        sections = [("", self.head), ("operations", self.operations), ("operations", self.further),
                    ("window", lambda: window_section(self.results, self.rows)), ("", self.browsers),
                    ("sheet", self.sheet),
                    ("others", self.others), ("growth", self.growth), ("progress", self.progress), ("large", self.large),
                    ("operations", self.machine_limits)]
        parts = [section() for part, section in sections if not part or part in self.results.parts]
        if self.notes.exists():
            parts.append([self.notes.read_text(encoding="utf-8").rstrip()])
        return "\n\n".join("\n".join(part) for part in parts if part) + "\n"

    def median(self, engine, mode, name, rows=None, what="ms"):
        return self.results.median(engine, mode, name, rows or self.rows, what)

    def head(self):
        versions = self.results.versions
        return ["# Benchmarks", "",
                "Written by `scripts/bench`. Every figure is a median; all programs ran on the same generated rows one after the",
                "other, and " + self.agreement(), "",
                *table(["", ""], [
                    ["machine", machine()],
                    ["rows", f"{self.rows:,} arrivals, {self.rows // 10 * 9:,} assocs, {self.rows // 10:,} origins"],
                    ["DuckDB", f"{versions.get('duckdb', '–')}, two threads"],
                    ["SQLite", versions.get("sqlite", "–")]]), "",
                *table(["part", "begun", "load then", "minutes", "runs"], [self.part(part) for part in PARTS]), "",
                "\"Again\": the columns are decoded. \"First\": a new process, the file in the page cache. DuckDB's table",
                "is loaded and warm, in its process; \"CSV\" is DuckDB reading the same rows from CSV files for each",
                "operation. The floor is what the machine needs for the steps without which the operation can't be done,",
                "by the figures at the end. Times are milliseconds on the clock; \"CPU\" compares processor times, which",
                "other work on the machine lengthens less. What is not as was aimed at is bold."]

    def part(self, part):
        of = self.results.parts.get(part.name)
        if of is None:
            return [part.text, "not measured", "", "", ""]
        if missing := of["figures"].get("missing"):
            return [part.text, f"needs {missing}", "", "", ""]
        return [part.text, of["when"], f"{of['load']:.1f}", f"{of['minutes']:.1f}", str(of["runs"])]

    def agreement(self):
        differences = self.results.differences
        return f"**their answers differ**: {'; '.join(differences)}." if differences else "gave the same answers."

    def operations(self):
        limits, sizes = (self.results.figure("operations", name) for name in ("limits", "table_sizes"))
        first_floor, again_floor = floors(limits, sizes, self.rows)
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
        return [f"## {self.rows:,} arrivals, again", "",
                f"Aimed at: at most {AGAIN_LIMIT} × DuckDB, {MACHINE_LIMIT} × the floor.", "",
                *table(["", "again", "DuckDB", "× DuckDB", "CPU", "floor", "× floor"], again_rows), "",
                f"## {self.rows:,} arrivals, first", "",
                f"Aimed at: at most so many times DuckDB's loaded table, {CSV_LIMIT} × CSV, {MACHINE_LIMIT} × the floor.", "",
                *table(["", "first", "× DuckDB", "aim", "CSV", "× CSV", "floor", "× floor"], first_rows)]

    def further(self):
        peak = self.results.most("orvane", "first", self.rows, "peak_mb")
        return ["## Beside them", "", *table(["", "ms"], [
            ["a click on the header of time, in the model: again", number(self.median("orvane", "again", "header_sort"))],
            ["the same, first", number(self.median("orvane", "first", "header_sort"))],
            ["opening the database and counting the arrivals", number(self.median("orvane", "again", "open"))],
            ["1,000 pages of 48 × 24 cells at random rows", number(self.median("orvane", "again", "scroll"))]]), "",
            f"Most memory of a process that did one operation first: {peak:,} MB."]

    def browsers(self):
        rows = {"browsers": self.small, "many-browsers": self.rows}
        measured = {part: rows[part] for part in rows if self.results.figure(part, "browsers")}
        return browsers_section(self.results, measured) if measured else []  # the table of the parts says why

    def sheet(self):
        rows, size, mebibytes, save, cancelled = (self.results.figure("sheet", name) for name in (
            "sheet_rows", "sheet_bytes", "sheet_mebibytes", "save_as", "save_as_cancelled"))
        seconds, processor = (self.median("orvane", "first", "export_xlsx", rows, what) / 1e3 for what in ("ms", "cpu_ms"))
        stops = [[f"Save As, Cancel pressed when the bar shows {float(at):.0%}: until it is over, ms", "",
                  "ended before that" if ms is None else within(ms, STOP_LIMIT_MS), number(STOP_LIMIT_MS)]
                 for at, ms in cancelled.items()]
        return [f"## A spreadsheet of {rows:,} arrivals", "", f"All fields: {size / 1e6:,.0f} MB.", "",
                *table(["", "`ovdb`", "Save As", "aim"], [
                    ["seconds", number(seconds), number(save["clock"]), ""],
                    ["of the processor", number(processor), number(save["processor"]), ""],
                    ["memory at the peak, MiB", number(mebibytes), number(save["memory at the peak"]), ""],
                    ["longest time without an event handled, ms", "",
                     within(save["longest time without events"], PROGRESS_LIMIT_MS), number(PROGRESS_LIMIT_MS)],
                    ["the progress dialog is seen after, ms", "", number(save.get("progress seen after")), ""],
                    *stops])]

    def others(self):
        engines = [("orvane", "again"), ("orvane", "first"), ("duckdb", "again"), ("sqlite", "again"),
                   ("sqlite-indexed", "again"), ("tools", "again")]
        rows = [[text, *(number(self.median(engine, mode, name, self.small)) for engine, mode in engines)]
                for name, text, _ in OPERATIONS]
        return [f"## {self.small:,} arrivals, with the others", "",
                *table(["", "ours again", "ours first", "DuckDB", "SQLite", "SQLite with indexes", "awk, sort, join"], rows)]

    def growth(self):
        def exponent(name, mode):
            growth = self.results.growth(self.sizes, name, mode)
            return "–" if growth is None else f"{growth:.2f}"

        return ["## How the cost grows", "",
                "The exponent of the rows, fitted over " + ", ".join(f"{size:,}" for size in self.sizes) +
                " arrivals.", "",
                *table(["", "again", "first"], [[text, exponent(name, "again"), exponent(name, "first")]
                                                for name, text, _ in OPERATIONS])]

    def progress(self):
        measured = [size for size in self.sizes if self.results.most("orvane", "progress", size, "ms") is not None]
        rows = []
        for name, text, _ in OPERATIONS:
            row = [text]
            for size in measured:
                row += [within(self.median("orvane", "progress", name, size), PROGRESS_LIMIT_MS),
                        within(self.median("orvane", "progress", name, size, "stop_ms"), STOP_LIMIT_MS)]
            rows.append(row)
        return ["## Progress and cancel", "",
                "In ms, by the number of arrivals: the longest time that the progress hook was not called, begin and end",
                f"included (at most {PROGRESS_LIMIT_MS}), and the longest that an operation took to return when told to stop, at any",
                f"of the hook's first 10 calls (at most {STOP_LIMIT_MS}). The spreadsheet has its own table.", "",
                *table(["", *(f"{size:,}: {what}" for size in measured for what in ("without a call", "to stop"))], rows)]

    def large(self):
        what, *steps = self.results.figure("large", "lines")
        if what["limit_mb"]:
            limit = f"a control group of {what['limit_mb']:,} MB, the page cache included"
        else:
            limit = "as much memory as there is, as no control group was to be had"
        return ["## A table larger than its memory", "",
                f"`bench/large_table.py`: {what['rows']:,} rows, {what['table_mb']:,} MB, in {limit}. The command line begins a",
                "process for each step; the window's steps are of one, with its memory so far. Milliseconds on the clock, the median and the",
                "worst where there are several.", "",
                *table(["", "ms", "worst", "most memory, MB", "answer"], [
                    [("window: " if line.get("window") else "`ovdb`: ") + line["step"], number(line["ms"]),
                     number(line.get("worst_ms")), number(line["most_mb"]), str(line["answer"]).strip()]
                    for line in steps])]

    def machine_limits(self):
        limits = self.results.figure("operations", "limits")
        return ["## What the machine can do", "", "Two threads, the best of five (`bench/limits.cpp`).", "",
                *table(["", "a second"], [[text, f"{limits[name] / unit:,.1f} {shown}"]
                                          for name, text, shown, unit in LIMITS if name in limits]),
                "", "Of these the floors are made; of a first operation there are reading the files and decoding the columns,",
                "too.", "", *table(["floor of", "what there is in it, done again"], FLOORS)]
