"""The operations that are compared, and what is aimed at."""
from typing import NamedTuple, Optional


class Operation(NamedTuple):
    name: str
    text: str
    first_limit: Optional[float]  # at most so many times the loaded table's time where it is a process's first


OPERATIONS = [
    Operation("subset_station", "subset `sta == 'GPDB'`", 5),
    Operation("subset_range", "subset on a time range and `snr > 10`", 5),
    Operation("sort_time", "sort by time", 1),
    Operation("sort_sta_time", "sort by sta, time", 1),
    Operation("join", "join arrival–assoc–origin", 1),
    Operation("group_sta", "group by sta", 2),
    Operation("nojoin", "no-join arrival–assoc", 1),
    Operation("interval_join", "join arrival–site (sta, day within ondate::offdate)", 2),
    Operation("theta_join", "theta join arrival–site (an equality and a range)", 1),
    Operation("find_last", "find forward to the last row", None),
    Operation("export_csv", "export to CSV", None),
    Operation("unjoin", "subset, join and unjoin", None),
]
NAMES = [operation.name for operation in OPERATIONS]
WRITING = {"export_csv", "unjoin"}  # what makes files: twice is enough where time is short

AGAIN_LIMIT = 0.5  # of the loaded table's time
CSV_LIMIT = 0.15  # of the time from CSV files
MACHINE_LIMIT = 2  # times what the machine needs
PROGRESS_LIMIT_MS = 500
STOP_LIMIT_MS = 100


def floors(limits, sizes, rows):
    """Milliseconds that the machine needs at least for the steps of an operation: first, and again."""

    def scan(count):
        return 1e3 * count / limits["scan"]

    def decode(count):
        return 1e3 * count / limits["decode"]

    def radix(bits):
        return 1e3 * rows / limits["radix"] * bits / 46

    def probe(count):
        return 1e3 * count / limits["probe"]

    def scatter(count):
        return 1e3 * count / limits["scatter"]

    def read(*names):
        return 1e3 * sum(sizes[name] for name in names) / limits["read"]

    assoc = rows * 0.9
    again = {
        "subset_station": scan(4 * rows),
        "subset_range": scan(16 * rows),
        "sort_time": radix(51),
        "sort_sta_time": radix(60),
        # The rows of assoc put in place by arid and read off, those of origin found for each.
        "join": scatter(assoc) + scan(8 * rows + 8 * assoc) + 2 * probe(assoc) + scan(5 * 4 * assoc),
        "group_sta": scan(12 * rows),
        "nojoin": scan(8 * rows + 8 * assoc) + scan(4 * rows),
        "interval_join": scan(20 * rows) + scan(8 * rows),
        "theta_join": scan(20 * rows) + scan(8 * rows),
        "find_last": scan(8 * rows),
    }
    columns = {
        "subset_station": (["arrival"], rows), "subset_range": (["arrival"], 2 * rows),
        "sort_time": (["arrival"], rows), "sort_sta_time": (["arrival"], 2 * rows),
        "join": (["arrival", "assoc", "origin"], rows + 2 * assoc + rows / 10), "group_sta": (["arrival"], rows),
        "nojoin": (["arrival", "assoc"], rows + assoc), "interval_join": (["arrival"], 2 * rows),
        "theta_join": (["arrival"], 2 * rows), "find_last": (["arrival"], rows),
    }
    first = {name: read(*tables) + decode(count) + again[name] for name, (tables, count) in columns.items()}
    return first, again
