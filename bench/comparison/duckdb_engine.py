"""The operations in DuckDB: over its own loaded table, and over CSV files."""
from comparison.results import lines_of, say


def measure_loaded(script, out, rows, runs, results, names):
    say(f"DuckDB, {rows:,} rows")
    lines = lines_of(["node", script, out, "--runs", runs, *names])
    results.add([line for line in lines if line["mode"] == "again"])


def measure_csv(script, out, rows, results, names):
    """A run of each."""
    say(f"DuckDB from CSV files, {rows:,} rows")
    results.add(lines_of(["node", script, out, "--csv", "--runs", 1, *names]), rows=rows)
