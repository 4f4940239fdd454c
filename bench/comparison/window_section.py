"""What the document says of the window."""
from comparison.formatting import number, table, within
from comparison.window import COPIED, FEW, KINDS

FRAME_MS = 33  # what is seen later is felt: the aim of what has to be there at once
AT_ONCE = ["menu of a cell", "menu of a row", "menu of a column", "tooltip of a row", "tooltip of a column",
           "tooltip of the table", "tooltip of a row, shown", "tooltip of a column, shown", "tooltip of a cell, shown",
           "double click on an edge", "status line"]
PAGES = ["page", "page at the first row", "page at the last row"]
# What is aimed at, by what view_bench measures and the name of the figure.
AIMS = {
    **{(page, key): aim for page in PAGES
       for key, aim in (("ms", 12), ("model_ms", 6), ("fresh_ms", 12), ("fresh_model_ms", 6))},
    **{(what, "ms"): FRAME_MS for what in AT_ONCE}, **{(what, "worst_ms"): FRAME_MS for what in AT_ONCE},
    ("select all", "ms"): 50, ("Page Down", "ms"): FRAME_MS, ("Page Down", "worst_ms"): FRAME_MS, ("Page Down", "late"): 0,
    ("Page Down", "late_processor"): 0, ("Page Down", "grown_bytes_a_frame"): 8,  # less than a pointer: nothing by frame
}
WORST = {"ms": "worst_ms", "fresh_ms": "fresh_worst_ms"}  # are told in one cell
SAID_ONCE = {"rows", "columns", "frames"}
REQUESTS = [  # of requests_bench, with the aim in microseconds
    ("fieldName", "\"field_name\" through handle, connection and dispatcher", 0.5),
    ("cellText", "a cell's text", 1), ("handleMadeAndDestroyed", "a handle made and destroyed", 0.5),
    ("closingWithAMillionHandles", "a connection with a million handles closed", 1e6),
]


def page_figures(lines):
    """{(what, key): {kind: value}}, in the order in which they came."""
    figures = {}
    for line in lines:
        kind, _, what = line["name"].partition(": ")
        for key, value in line.items():
            if key != "name" and key not in SAID_ONCE:
                figures.setdefault((what, key), {})[kind.split()[0].rstrip(",")] = value
    return figures


def view_table(lines):
    figures = page_figures(lines)
    kinds = ["base", "sorted", "joined", "window", "toolkit"]
    kinds = [kind for kind in kinds if any(kind in values for values in figures.values())]
    rows = []
    for (what, key), values in figures.items():
        if key in WORST.values():
            continue
        worst = figures.get((what, WORST.get(key)), {})

        def cell(kind):
            def of(values, key):
                return within(values.get(kind), AIMS.get((what, key)) if kind != "toolkit" else None)

            return of(values, key) + (f"; {of(worst, WORST[key])}" if kind in worst else "")

        rows.append([f"{what}: {key}", *map(cell, kinds), number(AIMS[what, key]) if (what, key) in AIMS else ""])
    names = {"base": "base table", "window": "the window", "toolkit": "toolkit's own view"}
    return table(["", *(names.get(kind, kind) for kind in kinds), "aim"], rows)


def window_section(results, rows):
    def figure(name):
        return results.figure("window", name)

    unfinished = figure("view_unfinished")
    text = [f"## The window, over {rows:,} arrivals", "",
            "`view_bench`: a page of 48 × 24 cells, of which in the model; of the table, the table sorted by clicking on its",
            "header, and the four-table join arrival–assoc–origin–site; the toolkit's own view and delegate are over a model",
            "that costs nothing. \"Fresh\": painted for the first time, with what has to be read. Milliseconds of the processor:",
            f"median; worst. `wall` is on the clock; `late` are the frames of {figure('frames'):,} times Page Down that took longer",
            f"than {FRAME_MS} ms on it.", "",
            *view_table(figure("view"))]
    if unfinished:
        text += ["", f"**Not all was measured in time**: {', '.join(unfinished)}."]
    copying = figure("copying")
    text += ["", f"A copy of {COPIED[0]:,} × {COPIED[1]} cells, aimed at: a second.", "",
             *table(["", *KINDS], [
                 ["seconds", *(within(copying[kind]["clock"], 1) for kind in KINDS)],
                 ["of the processor", *(number(copying[kind]["processor"]) for kind in KINDS)]])]
    requests = figure("requests")
    text += ["", "Requests, in microseconds of the processor.", "",
             *table(["", "µs", "aim"], [[said, within(requests[name], aim), number(aim)] for name, said, aim in REQUESTS])]
    return text + opening(figure("opening"), rows)


def opening(lines, many):
    """What ovedit needs more for many rows than for few is compared with what the toolkit's headers need."""
    taken = {(program, int(rows)): (seconds, mebibytes) for program, rows, seconds, mebibytes in lines}

    def more(program, what):
        return taken[program, many][what] - taken[program, FEW][what]

    headers, program = more("bare view", 0), more("ovedit", 0)
    # Processor times of a third of a second vary by some hundredths.
    aimed = program <= headers + 0.05 * taken["ovedit", FEW][0]
    mark = "" if aimed else "**"
    return ["", "Opening a table into a painted window (`open_window.py`); aimed at: no more for many rows than what the",
            "toolkit's headers cost, as its own view shows (within 5 % of the opening).", "",
            *table(["", f"{FEW:,} rows", f"{many:,} rows", "more"], [
                ["ovedit, s of the processor", number(taken["ovedit", FEW][0]), number(taken["ovedit", many][0]),
                 f"{mark}{program:.3f}{mark}"],
                ["toolkit's own view, the same", number(taken["bare view", FEW][0]), number(taken["bare view", many][0]),
                 f"{headers:.3f}"],
                ["ovedit, MiB", number(taken["ovedit", FEW][1]), number(taken["ovedit", many][1]),
                 number(more("ovedit", 1))],
                ["toolkit's own view, MiB", number(taken["bare view", FEW][1]), number(taken["bare view", many][1]),
                 number(more("bare view", 1))]])]
