"""What the document says of the windows beside each other."""
from comparison.formatting import number, ratio, table

MEASURED = [  # the figure, and what it is of
    ("start", "start until the table is painted, s"), ("start, processor", "of the processor"),
    ("pages, processor", "100 times Page Down, s of the processor"),
    ("last row", "to the last row (Ctrl+End), s"), ("last row, processor", "of the processor"),
    ("sort", "sort by a click on the header of time, s"), ("sort, processor", "of the processor"),
    ("memory", "most memory, MiB"),
]


def browsers_section(results, measured):
    """`measured`: parts, and the rows of each."""
    head, columns = [""], []
    for part, rows in measured.items():
        head += [f"ovedit, {rows:,}", "DB Browser", "ratio"]
        columns.append(list(results.figure(part, "browsers").values()))
    lines = []
    for figure, text in MEASURED:
        line = [text]
        for ours, other in columns:
            line += [number(ours[figure]), number(other[figure]), ratio(ours[figure], other[figure])]
        lines.append(line)
    version = results.figure(next(iter(measured)), "version")
    return ["## Beside DB Browser for SQLite", "",
            f"Version {version} of the Debian package, and ovedit: both in a window of 1200 × 800 under Xvfb and openbox, with new",
            "settings, from outside (`bench/comparison/browsers.py`): keys and clicks of xdotool, the picture in the server's",
            "memory until it stands still and the program rests, and what the system says of the process, whose processor time",
            "goes by steps of 0.01 s. The arrivals are a table of SQLite without indexes there; its window leaves the table 20",
            "rows and 8 columns, ovedit's shows 39 and 10. Its start includes a click on \"Browse Data\".", "",
            *table(head, lines)]
