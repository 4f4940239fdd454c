"""All arrivals as a spreadsheet: by the command line, and through the window's Save As."""
import os
import statistics

from comparison.alone import run_alone
from comparison.results import lines_of, say

MOST_ROWS = 1_000_000  # a sheet has room for 1,048,576
FILTER = "Excel Spreadsheet (*.xlsx)"
CANCELLED_AT = (0.1, 0.6)  # fractions of the bar: where rows are written, and where they are packed


def measure_command_line(programs, path, out, rows, runs, results):
    say(f"a spreadsheet, {path.name}")
    sheet = out / "arrivals.xlsx"
    peaks = []
    for _ in range(runs):
        taken = run_alone([programs / "ovdb", "select", f"{path}.arrival", "--force", "--output", sheet])
        peaks.append(taken.mebibytes)
        results.add([{"engine": "orvane", "operation": "export_xlsx", "mode": "first", "rows": rows,
                      "ms": 1e3 * taken.seconds, "cpu_ms": 1e3 * taken.processor}])
        results.set_figures(sheet_rows=rows, sheet_bytes=os.path.getsize(sheet), sheet_mebibytes=statistics.median(peaks))
        sheet.unlink()


def measure_save_as(programs, path, out, rows, runs, results):
    """To the end, and given up at some points; what taking_along_bench says, by what it is of."""
    sheet = out / "saved.xlsx"
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen")

    def saved(*options):
        lines = lines_of([programs / "taking_along_bench", "--json", *options, f"{path}.arrival", "save", sheet, FILTER],
                         environment)
        sheet.unlink(missing_ok=True)
        return {line["what"]: line["value"] for line in lines}

    whole = [saved() for _ in range(runs)]
    results.set_figures(save_as={what: statistics.median(one[what] for one in whole) for what in whole[0]})
    # That a run ended before the button was pressed is told, too.
    results.set_figures(save_as_cancelled={str(at): saved("--cancel", at).get("over after Cancel") for at in CANCELLED_AT})
