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
# What the floor of an operation that is run again is made of; of the first one it has reading the files and decoding
# the columns beside it.
FLOORS = [
    ("subset by station", "the codes are compared with one, and the rows written where they are the same"),
    ("subset on a range", "both columns are compared, and the rows written"),
    ("sorts", "a radix sort of keys with their rows, of as many bits as the values of the fields have: 51 and 60"),
    ("join", "the rows of assoc are put in place by arid, the columns read, for each pair orid and the origin's row looked up, "
             "and what is written of both joins is as much as memory gives"),
    ("group", "the rows are counted by their codes, and put in place by them, of 500 places"),
    ("no-join", "the keys of assoc are put into a set of bits, those of arrival looked for, and the rows written that lack one"),
    ("joins by a range", "each row's number is compared with the up to three ranges of its station, and the rows of each "
                         "pair written"),
    ("find", "the column is read"),
]
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

    def step(name, count):
        return 1e3 * count / limits[name]

    def radix(bits):
        return step("radix", rows) * bits / 46

    def read(*names):
        return 1e3 * sum(sizes[name] for name in names) / limits["read"]

    assoc = rows * 0.9
    again = {
        "subset_station": step("pick", rows),
        "subset_range": step("sift", rows),
        "sort_time": radix(51),
        "sort_sta_time": radix(60),
        # The rows of assoc put in place by arid and read off, those of origin found for each.
        "join": step("scatter", assoc) + scan(8 * rows + 8 * assoc) + 2 * step("probe", assoc) + scan(5 * 4 * assoc),
        "group_sta": step("spread", rows),
        "nojoin": step("mark", assoc) + step("lack", rows),
        "interval_join": step("meet", rows),
        "theta_join": step("meet", rows),
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
