"""The operations in DuckDB: over its own loaded table, and over CSV files."""
from comparison.results import lines_of, say


def measure_duckdb(script, out, rows, runs, csv_runs, results, names, csv_names):
    say(f"DuckDB, {rows:,} rows")
    lines = lines_of(["node", script, out, "--runs", runs, *names])
    results.add([line for line in lines if line["mode"] == "again"])
    if csv_runs:
        say(f"DuckDB from CSV files, {rows:,} rows")
        results.add(lines_of(["node", script, out, "--csv", "--runs", csv_runs, *csv_names]), rows=rows)
