"""Medians by engine, mode and operation, with the answers held against each other; kept part by part."""
import datetime
import json
import math
import os
import statistics
import subprocess
import sys
import time


def say(text):
    print(text, file=sys.stderr, flush=True)


def run(command, environment=None):
    """What a program prints. What it says on its standard error is told when it fails."""
    process = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                             env=environment, check=False)
    if process.returncode != 0:
        say(process.stderr[-4000:])
        process.check_returncode()
    return process.stdout


def lines_of(command, environment=None):
    """The lines of JSON that a program prints."""
    return [json.loads(line) for line in run(command, environment).splitlines()]


def lines_within(seconds, command, environment=None):
    """Those that it prints in so many seconds, and whether it came to its end."""
    process = subprocess.Popen([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                               text=True, env=environment)
    try:
        printed, _ = process.communicate(timeout=seconds)
    except subprocess.TimeoutExpired:
        process.kill()
        printed, _ = process.communicate()
        return [json.loads(line) for line in printed.splitlines()], False
    if process.returncode != 0:
        raise subprocess.CalledProcessError(process.returncode, command)
    return [json.loads(line) for line in printed.splitlines()], True


class Results:
    """Every line belongs to the part that was begun last. A part that is begun anew forgets what it had."""

    def __init__(self):
        self.lines = []
        self.parts = {}  # by name: when, load, minutes, runs, figures
        self.part = None
        self.count_up()

    def count_up(self):
        self.runs = {}
        self.answers = {}
        self.versions = {}
        self.differences = []  # answers that aren't the same, which nothing excuses
        for line in self.lines:
            self.take(line)

    def begin(self, part, runs):
        self.lines = [line for line in self.lines if line["part"] != part]
        self.count_up()
        self.part = part
        self.began = time.monotonic()
        self.parts[part] = {"when": f"{datetime.datetime.now(datetime.timezone.utc):%Y-%m-%d %H:%M} UTC",
                            "load": round(os.getloadavg()[0], 1), "runs": runs, "minutes": None, "figures": {}}

    def end(self):
        self.parts[self.part]["minutes"] = round((time.monotonic() - self.began) / 60, 1)

    def set_figures(self, **figures):
        """What a part has beside its lines."""
        self.parts[self.part]["figures"].update(figures)

    def figure(self, part, name):
        return self.parts.get(part, {}).get("figures", {}).get(name)

    def add(self, lines, engine=None, rows=None):
        for line in lines:
            line["engine"] = engine or line["engine"]
            line["rows"] = rows or line["rows"]
            line["part"] = self.part
            self.lines.append(line)
            self.take(line)

    def take(self, line):
        key = (line["engine"], line["mode"], line["operation"], line["rows"])
        self.runs.setdefault(key, []).append(line)
        if "version" in line:
            self.versions[line["engine"].split("-")[0]] = line["version"]
        if line.get("checksum") is None or line["operation"] in ("open", "scroll"):
            return
        answer = (int(line["count"]), int(line["checksum"]))
        known = self.answers.setdefault((line["operation"], key[3]), (answer, line["engine"]))
        if known[0] != answer:
            difference = f"{line['operation']} of {key[3]:,}: {line['engine']} answers {answer}, {known[1]} {known[0]}"
            say(difference)
            self.differences.append(difference)

    def keep(self, path):
        """So that a part can be measured once more, and the document written."""
        path.write_text(json.dumps({"parts": self.parts, "lines": self.lines}))

    @classmethod
    def kept(cls, path):
        results = cls()
        results.go_back(path)
        return results

    def go_back(self, path):
        """To what was kept last."""
        kept = json.loads(path.read_text()) if path.exists() else {"parts": {}, "lines": []}
        self.parts, self.lines = kept["parts"], kept["lines"]
        self.count_up()

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
