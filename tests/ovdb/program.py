"""The program under test, and small databases for it."""

import os
import subprocess
import tempfile
import unittest
from pathlib import Path

OVDB = os.environ["OVDB"]
SOURCE = Path(os.environ["ORVANE_SOURCE"])
DEMO = SOURCE / "demo" / "quakes"

# name: (type, width, format, null)
ATTRIBUTES = {
    "sta": ("string", 6, "%-6s", "-"),
    "lat": ("real", 9, "%9.4f", "-999.0000"),
    "lon": ("real", 9, "%9.4f", "-999.0000"),
    "note": ("string", 24, "%-24s", "-"),
    "time": ("time", 17, "%17.5f", "-9999999999.99900"),
    "arid": ("integer", 8, "%8d", "-1"),
    "orid": ("integer", 8, "%8d", "-1"),
    "phase": ("string", 8, "%-8s", "-"),
    "delta": ("real", 8, "%8.3f", "-1.000"),
    "flag": ("boolean", 2, "%2d", "-1"),
    "jdate": ("yearday", 8, "%8d", "-1"),
}
RELATIONS = {
    "site": (["sta", "lat", "lon", "note"], ["sta"]),
    "arrival": (["sta", "time", "arid", "phase"], ["sta", "time"]),
    "assoc": (["arid", "orid", "sta", "delta"], ["arid", "orid"]),
    "lonely": (["flag", "note"], ["flag"]),
    "kinds": (["flag", "jdate", "orid", "lat", "time", "note"], ["orid"]),
}


def schema_text():
    lines = ["name: tiny", "description: a schema for tests", "attributes:"]
    for name, (kind, width, form, null) in ATTRIBUTES.items():
        lines.append(f'  {name}: {{type: {kind}, width: {width}, format: "{form}", null: "{null}", '
                     f'units: units of {name}, description: what {name} is}}')
    lines.append("relations:")
    for name, (fields, primary) in RELATIONS.items():
        alternate = ", alternate: [arid], defines: arid" if name == "arrival" else ""
        lines.append(f"  {name}: {{fields: [{', '.join(fields)}], primary: [{', '.join(primary)}]{alternate}, "
                     f"description: the table {name}}}")
    return "\n".join(lines) + "\n"


def field(name, value):
    """A field as it stands in a file; values are texts or bytes."""
    kind, width, _, null = ATTRIBUTES[name]
    raw = value if isinstance(value, bytes) else str(null if value is None else value).encode()
    assert len(raw) <= width, (name, value)
    return raw.ljust(width) if kind == "string" else raw.rjust(width)


def record(table, row):
    fields = RELATIONS[table][0]
    values = list(row) + [None] * (len(fields) - len(row))
    return b" ".join(field(name, value) for name, value in zip(fields, values)) + b"\n"


def environment(**changes):
    """The test's own, without settings that would change what the program does."""
    kept = {key: value for key, value in os.environ.items() if not key.startswith("ORVANE_")}
    kept.update(changes)
    return kept


def run(*arguments, stdin=b"", env=None, cwd=None, stdout=subprocess.PIPE, timeout=60):
    return subprocess.run([OVDB, *map(str, arguments)], input=stdin, stdout=stdout, stderr=subprocess.PIPE,
                          env=env or environment(), cwd=cwd, timeout=timeout)


class ProgramTest(unittest.TestCase):
    """Tests over a small database, which is made for each of them."""

    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="ovdb-test-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.database = self.folder / "db"
        (self.folder / "tiny.yaml").write_text(schema_text())
        self.database.write_text("schema: tiny\ndescription: made by a test\nlocks: none\n")
        self.write("site", ("AAK", "42.6390", "74.4940", "Ala Archa"), ("KIV", "43.9550", "42.6860", "Kislovodsk"),
                   ("TIXI", "71.6341", "128.8667"))
        self.write("arrival", ("KIV", "100.50000", "1", "P"), ("AAK", "99.00000", "2", "S"),
                   ("KIV", "90.00000", "3", "P"), ("XXX", "100.50000", "4", "P"))
        self.write("assoc", ("2", "10", "AAK", "1.500"), ("3", "10", "KIV", "20.000"), ("9", "11", "KIV"))

    def write(self, table, *rows):
        self.path(table).write_bytes(b"".join(record(table, row) for row in rows))

    def path(self, table):
        return Path(f"{self.database}.{table}")

    def table(self, name):
        return f"{self.database}.{name}"

    def output(self, *arguments, **options):
        """What a run writes that goes well and says nothing else."""
        result = run(*arguments, **options)
        self.assertEqual((result.returncode, result.stderr.decode()), (0, ""), arguments)
        return result.stdout.decode()

    def lines(self, *arguments, **options):
        return self.output(*arguments, **options).splitlines()

    def failure(self, code, *arguments, **options):
        """The message of a run that fails."""
        result = run(*arguments, **options)
        message = result.stderr.decode()
        self.assertEqual(result.returncode, code, (arguments, message))
        self.assertTrue(message.startswith("ovdb: "), message)
        self.assertTrue(message.endswith("\n"), message)
        return message
