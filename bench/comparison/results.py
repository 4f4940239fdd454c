"""Medians by engine, mode and operation, with the answers held against each other."""
import argparse
import json
import math
import statistics
import subprocess
import sys


def say(text):
    print(text, file=sys.stderr, flush=True)


def lines_of(command, environment=None):
    """The lines of JSON that a program prints."""
    process = subprocess.run([str(part) for part in command], check=True, stdout=subprocess.PIPE, text=True,
                             env=environment)
    return [json.loads(line) for line in process.stdout.splitlines()]


class Results:
    def __init__(self):
        self.runs = {}
        self.answers = {}
        self.versions = {}
        self.differences = []  # answers that aren't the same, which nothing excuses

    def add(self, lines, engine=None, rows=None):
        for line in lines:
            line["engine"] = engine or line["engine"]
            line["rows"] = rows or line["rows"]
            key = (line["engine"], line["mode"], line["operation"], line["rows"])
            self.runs.setdefault(key, []).append(line)
            if "version" in line:
                self.versions[line["engine"].split("-")[0]] = line["version"]
            if line.get("checksum") is None or line["operation"] in ("open", "scroll"):
                continue
            answer = (int(line["count"]), int(line["checksum"]))
            known = self.answers.setdefault((line["operation"], key[3]), (answer, line["engine"]))
            if known[0] != answer:
                difference = f"{line['operation']} of {key[3]:,}: {line['engine']} answers {answer}, {known[1]} {known[0]}"
                say(difference)
                self.differences.append(difference)

    def keep(self, path, figures):
        """So that the document can be written once more."""
        path.write_text(json.dumps({"figures": figures, "lines": [line for runs in self.runs.values() for line in runs]}))

    @classmethod
    def kept(cls, path):
        kept = json.loads(path.read_text())
        results = cls()
        for line in kept["lines"]:
            results.add([line])
        return results, argparse.Namespace(**kept["figures"])

    def median(self, engine, mode, operation, rows, what="ms"):
        runs = self.runs.get((engine, mode, operation, rows))
        values = [run[what] for run in runs or [] if what in run]
        return statistics.median(values) if values else None

    def count(self, engine, mode, operation, rows):
        return len(self.runs.get((engine, mode, operation, rows), []))

    def most(self, engine, mode, rows, what):
        """The most over all operations; none where nothing was measured."""
        values = [run[what] for key, runs in self.runs.items() if (key[0], key[1], key[3]) == (engine, mode, rows)
                  for run in runs if what in run]
        return max(values, default=None)

    def growth(self, sizes, operation, mode):
        """The exponent of the rows by which ours grows; none where there are too few sizes."""
        points = [(math.log(size), math.log(median)) for size in sizes
                  if (median := self.median("orvane", mode, operation, size))]
        if len(points) < 2:
            return None
        mean_x = statistics.mean(x for x, _ in points)
        mean_y = statistics.mean(y for _, y in points)
        return sum((x - mean_x) * (y - mean_y) for x, y in points) / sum((x - mean_x) ** 2 for x, _ in points)
