"""Reads written tables back by the schema file and says what is wrong with them.

Shares nothing with the code that writes: it goes by byte offsets from the schema.
"""

import re
from pathlib import Path

import yaml

# References that go by another name than the id they hold, and references to names: from
# which relation and field, to which.
NAMED_REFERENCES = [
    ("event", "prefor", "origin", "orid"), ("origin", "mbid", "netmag", "magid"),
    ("origin", "msid", "netmag", "magid"), ("origin", "mlid", "netmag", "magid"),
    ("netmag", "net", "network", "net"), ("affiliation", "net", "network", "net"),
    ("affiliation", "sta", "site", "sta"), ("arrival", "sta", "site", "sta"),
    ("assoc", "sta", "site", "sta"),
]

COMPARISON = re.compile(r"(\w+) (>=|<=|>|<|==|=~) (-?[\d.]+|'[^']*')")
OPERATORS = {
    ">=": lambda a, b: a >= b, "<=": lambda a, b: a <= b, ">": lambda a, b: a > b,
    "<": lambda a, b: a < b, "==": lambda a, b: a == b,
    "=~": lambda a, b: re.search(b, a) is not None,
}
NUMBERS = {"integer": r"-?\d+", "yearday": r"-?\d+", "real": r"-?\d+\.\d+", "time": r"-?\d+\.\d+"}


class TableCheck:
    """Collects `problems` over the tables of one database."""

    def __init__(self, schema_path, folder, database):
        document = yaml.load(Path(schema_path).read_text("utf-8"), Loader=yaml.BaseLoader)
        self.attributes = document["attributes"]
        self.relations = document["relations"]
        self.problems = []
        self.tables = {}
        self.values_checked = 0
        for path in sorted(Path(folder).glob(f"{database}.*")):
            relation = path.name[len(database) + 1:]
            if relation in self.relations:
                self.tables[relation] = self._read(relation, path)
            else:
                self.problems.append(f"{path.name}: the schema has no relation {relation}")
        for relation, rows in self.tables.items():
            self._check_keys(relation, rows)
            self._check_foreign(relation, rows)
        for reference in NAMED_REFERENCES:
            self._check_reference(*reference)
        self._check_lastid()

    def _null(self, name):
        return self.attributes[name]["null"].strip()

    def _read(self, relation, path):
        names = self.relations[relation]["fields"]
        widths = [int(self.attributes[name]["width"]) for name in names]
        size = sum(widths) + len(widths)
        data = path.read_bytes()
        if len(data) % size:
            self.problems.append(f"{path.name}: {len(data)} bytes are no multiple of {size}")
            return []
        rows = []
        for start in range(0, len(data), size):
            rows.append(self._record(path.name, start // size, data[start:start + size],
                                     list(zip(names, widths))))
        return rows

    def _record(self, file, number, line, fields):
        row, offset = {}, 0
        place = f"{file}, record {number}"
        for index, (name, width) in enumerate(fields):
            row[name] = self._value(f"{place}, {name}", name, line[offset:offset + width])
            separator = line[offset + width:offset + width + 1]
            if separator != (b"\n" if index + 1 == len(fields) else b" "):
                self.problems.append(f"{place}: {separator!r} after {name}")
            offset += width + 1
        if all(row[name] is None for name, _ in fields):
            self.problems.append(f"{place}: nothing but nulls")
        return row

    def _value(self, place, name, raw):
        self.values_checked += 1
        attribute = self.attributes[name]
        text = raw.decode("ascii", errors="replace")
        stripped = text.strip()
        left = attribute["type"] == "string"
        if text != (stripped.ljust(len(text)) if left else stripped.rjust(len(text))):
            self.problems.append(f"{place}: {text!r} is set to the wrong side")
        if not stripped or "\n" in text or "\ufffd" in text:
            self.problems.append(f"{place}: {text!r} is no value")
            return None
        if stripped == self._null(name):
            return None
        if left:
            value = stripped
        elif re.fullmatch(NUMBERS[attribute["type"]], stripped):
            value = float(stripped) if "." in stripped else int(stripped)
            decimals = re.search(r"\.(\d+)", attribute["format"])
            written = len(stripped.partition(".")[2])
            if written != (int(decimals.group(1)) if decimals else 0):
                self.problems.append(f"{place}: {stripped} is not in {attribute['format']}")
        else:
            self.problems.append(f"{place}: {text!r} is no {attribute['type']}")
            return None
        if not self._in_range(name, attribute.get("range", ""), value):
            self.problems.append(f"{place}: {value!r} is outside of {attribute['range']}")
        return value

    @staticmethod
    def _in_range(name, expression, value):
        """Whether `value` fulfils a range of comparisons joined by && alone or || alone."""
        if not expression:
            return True
        joined_by_or = "||" in expression
        results = []
        for part in expression.split("||" if joined_by_or else "&&"):
            match = COMPARISON.fullmatch(part.strip())
            if not match or match.group(1) != name or (joined_by_or and "&&" in part):
                raise ValueError(f"{name}: a range this check can't read: {expression}")
            literal = match.group(3)
            literal = literal[1:-1] if literal[0] == "'" else float(literal)
            results.append(OPERATORS[match.group(2)](value, literal))
        return any(results) if joined_by_or else all(results)

    def _check_keys(self, relation, rows):
        for kind in ("primary", "alternate"):
            fields = []
            for element in self.relations[relation].get(kind, []):
                text = element["range"] if isinstance(element, dict) else element
                fields += text.split("::")
            if not fields:
                continue
            seen = set()
            for number, row in enumerate(rows):
                key = tuple(row[field] for field in fields)
                if key in seen:
                    self.problems.append(f"{relation}, record {number}: {kind} key {key} twice")
                seen.add(key)

    def _check_foreign(self, relation, rows):
        for field in self.relations[relation].get("foreign", []):
            home = next((name for name, entry in self.relations.items()
                         if entry.get("defines") == field), None)
            if home and home != relation:
                self._check_reference(relation, field, home, field)

    def _check_reference(self, relation, field, home, home_field):
        known = {row[home_field] for row in self.tables.get(home, [])}
        for number, row in enumerate(self.tables.get(relation, [])):
            if row[field] is not None and row[field] not in known:
                self.problems.append(
                    f"{relation}, record {number}: {field} {row[field]} is not in {home}")

    def _check_lastid(self):
        defined = {entry["defines"]: name for name, entry in self.relations.items()
                   if "defines" in entry}
        for row in self.tables.get("lastid", []):
            rows = self.tables.get(defined.get(row["keyname"]), [])
            largest = max((other[row["keyname"]] for other in rows), default=None)
            if row["keyvalue"] != largest:
                self.problems.append(f"lastid: {row['keyname']} is {row['keyvalue']}, "
                                     f"the largest in use {largest}")

    def compare_with_feed(self, feed):
        """Every event of the feed against the records it became, by the catalogue's id."""
        features = {feature["id"]: feature for feature in feed["features"]}
        events = {row["evname"]: row for row in self.tables["event"]}
        if set(features) != set(events):
            self.problems.append("event and feed do not hold the same events")
            return
        origins = {row["orid"]: row for row in self.tables["origin"]}
        magnitudes = {row["orid"]: row for row in self.tables["netmag"]}
        errors = {row["orid"]: row["sdobs"] for row in self.tables["origerr"]}
        remarks = {}
        for row in sorted(self.tables["remark"], key=lambda row: row["lineno"]):
            remarks.setdefault(row["commid"], []).append(row["remark"])
        for name, feature in features.items():
            orid = events[name]["prefor"]
            origin, magnitude, properties = origins[orid], magnitudes[orid], feature["properties"]
            kind = properties["magType"]
            expected = dict(zip(("lon", "lat", "depth"), feature["geometry"]["coordinates"]))
            expected["time"] = properties["time"] / 1000
            expected["lddate"] = properties["updated"] / 1000
            expected.update({field: properties["mag"] if field == kind else None
                             for field in ("mb", "ms", "ml")})
            self._expect(name, origin, expected)
            self._expect(name, magnitude, {"magnitude": properties["mag"], "magtype": kind,
                                           "net": properties["net"]})
            self._expect(name, {"sdobs": errors.get(orid)}, {"sdobs": properties["rms"]})
            self._expect(name, {"remark": " ".join(remarks[origin["commid"]])},
                         {"remark": properties["place"]})

    def _expect(self, name, row, expected):
        for field, value in expected.items():
            found = row[field]
            if isinstance(value, (int, float)) and found is not None:
                decimals = re.search(r"\.(\d+)", self.attributes[field]["format"])
                same = abs(found - value) <= 0.5000001 * 10.0 ** -int(decimals.group(1))
            else:
                same = found == value
            if not same:
                self.problems.append(f"{name}: {field} is {found!r}, the feed has {value!r}")
