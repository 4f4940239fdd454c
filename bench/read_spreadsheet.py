#!/usr/bin/env python3
"""Reads a spreadsheet that was saved, without the programs that wrote it, and holds it against the table's text form:
bench/read_spreadsheet.py FILE.xlsx FILE.csv [--every N]

Both with a line of names. Reads the sheet as a stream of XML, counts its rows and cells, and compares every Nth row (1000)
with the line of the text form: numbers as numbers, times to the millisecond, a blank cell with any of the public
standard's nulls. Prints a line of JSON; what differs is said, and the exit status is 1.
"""
import argparse
import csv
import json
import resource
import sys
import time
import zipfile
import xml.parsers.expat

DAYS_TO_1970 = 25569
NULLS = {"", "-", "-1", "-999.0", "-9999999999.999"}


class Rows:
    """The rows of a sheet as they stream by: values by column, numbers as floats, in-line texts, None for blanks."""

    def __init__(self, take):
        self.take = take
        self.cells = 0
        self.parser = xml.parsers.expat.ParserCreate()
        self.parser.buffer_text = True
        self.parser.StartElementHandler = self.begin
        self.parser.EndElementHandler = self.end
        self.parser.CharacterDataHandler = self.characters

    def begin(self, name, attributes):
        if name == "row":
            self.number = int(attributes["r"])
            self.row = {}
        elif name == "c":
            self.column = attributes["r"].rstrip("0123456789")
            self.is_text = attributes.get("t") == "inlineStr"
            self.row[self.column] = None
            self.cells += 1
        elif name in ("v", "t"):
            self.text = []

    def characters(self, text):
        if getattr(self, "text", None) is not None:
            self.text.append(text)

    def end(self, name):
        if name in ("v", "t"):
            text = "".join(self.text)
            self.row[self.column] = text if self.is_text else float(text)
            self.text = None
        elif name == "row":
            self.take(self.number, self.row)




def null_number(text):
    try:
        return str(float(text)) in NULLS or text in NULLS
    except ValueError:
        return text in NULLS


def same(cell, text, is_time):
    if cell is None:
        return null_number(text) or text == ""
    if isinstance(cell, str):
        return cell == text
    wanted = float(text)
    if is_time:
        return abs((cell - DAYS_TO_1970) * 86400 - wanted) < 0.0015
    return cell == wanted


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("sheet")
    parser.add_argument("text")
    parser.add_argument("--every", type=int, default=1000)
    arguments = parser.parse_args()
    began = time.process_time()

    lines = csv.reader(open(arguments.text, newline="", encoding="utf-8"))
    names = next(lines)
    state = {"rows": 0, "line": 1, "compared": 0, "wrong": 0, "fields": {}}

    def take(number, row):
        state["rows"] += 1
        if number != state["rows"]:
            raise SystemExit(f"row {number} comes where row {state['rows']} is expected")
        if number == 1:
            state["fields"] = {column: name for column, name in row.items()}
            if sorted(row.values()) != sorted(names):
                raise SystemExit(f"the sheet has the columns {row}, the text {names}")
            return
        values = next(lines, None)
        if (number - 2) % arguments.every != 0 or values is None:
            return
        record = dict(zip(names, values))
        state["compared"] += 1
        for column, name in state["fields"].items():
            if not same(row.get(column), record[name], name in ("time", "endtime", "lddate")):
                state["wrong"] += 1
                print(f"row {number}, {name}: {row.get(column)!r} in the sheet, {record[name]!r} in the text", file=sys.stderr)

    rows = Rows(take)
    with zipfile.ZipFile(arguments.sheet) as archive, archive.open("xl/worksheets/sheet1.xml") as sheet:
        while block := sheet.read(1 << 20):
            rows.parser.Parse(block)
        rows.parser.Parse(b"", True)
    rest = sum(1 for _ in lines)
    if rest:
        print(f"the text has {rest} lines more than the sheet", file=sys.stderr)
    print(json.dumps({
        "name": "read spreadsheet", "rows": state["rows"] - 1, "columns": len(state["fields"]), "cells": rows.cells,
        "compared": state["compared"], "wrong": state["wrong"], "cpu_s": round(time.process_time() - began, 1),
        "peak_mb": round(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024, 1)}))
    return 1 if state["wrong"] or rest else 0


if __name__ == "__main__":
    sys.exit(main())
