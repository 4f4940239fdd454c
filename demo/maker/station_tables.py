"""site, network and affiliation from stations.csv and networks.csv."""

import csv
import datetime
import re


def _rows(path):
    with open(path, encoding="ascii", newline="") as stream:
        return list(csv.DictReader(line for line in stream if not line.startswith("#")))


def compiled_time(path):
    """Epoch seconds of the day in the list's `# compiled: yyyy-mm-dd` line."""
    with open(path, encoding="ascii") as stream:
        match = re.search(r"^# compiled: (\d{4}-\d\d-\d\d)$", stream.read(), re.MULTILINE)
    if not match:
        raise ValueError(f"{path}: no line '# compiled: yyyy-mm-dd'")
    day = datetime.date.fromisoformat(match.group(1))
    return datetime.datetime.combine(day, datetime.time(), datetime.timezone.utc).timestamp()


def station_tables(stations_path, networks_path):
    """(tables, compiled time): every station and network once, in the lists' order."""
    lddate = compiled_time(stations_path)
    tables = {"site": [], "network": [], "affiliation": []}
    for row in _rows(stations_path):
        elevation = float(row["elev_m"]) / 1000.0 if row["elev_m"] else None
        # ondate and offdate stay null: the lists do not give them.
        tables["site"].append({
            "sta": row["sta"], "lat": float(row["lat"]), "lon": float(row["lon"]),
            "elev": elevation, "staname": row["name"], "statype": "ss", "lddate": lddate})
        tables["affiliation"] += [{"net": net, "sta": row["sta"], "lddate": lddate}
                                  for net in row["nets"].split()]
    tables["network"] = [{"net": row["net"], "netname": row["name"], "nettype": row["nettype"],
                          "auth": row["auth"], "lddate": lddate}
                         for row in _rows(networks_path)]
    return tables, lddate
