#!/usr/bin/env python3
"""Makes the tables of the demo database from the USGS feed, or checks them.

    make_quakes.py earthquakes.json            makes quakes.* beside this script
    make_quakes.py --check [earthquakes.json]  checks them, and against the feed if given

The feed is data/earthquakes.json of the npm package vega-datasets; README.md says how to get
it. Needs Python 3.9 and python3-yaml.
"""

import argparse
import json
import sys
from pathlib import Path

from maker.computed_arrivals import computed_arrivals
from maker.feed_tables import events_of, feed_tables
from maker.flat_tables import Schema, write_tables
from maker.station_tables import station_tables
from maker.table_check import TableCheck
from maker.travel_times import PUBLISHED_TIMES, DirectWave

HERE = Path(__file__).resolve().parent
DATABASE = "quakes"
# The field of each table that lastid keeps the largest number of.
NUMBERED = {"orid": "origin", "evid": "event", "magid": "netmag", "commid": "remark",
            "arid": "arrival"}
PUBLISHED_TOLERANCE_SECONDS = 0.02


def make(feed, schema_path, folder):
    schema = Schema(schema_path)
    events = events_of(feed)
    tables = feed_tables(events, schema)
    stations, compiled = station_tables(HERE / "stations.csv", HERE / "networks.csv")
    tables.update(stations)
    tables.update(computed_arrivals(events, tables["site"], compiled))
    tables["lastid"] = [
        {"keyname": key, "keyvalue": max(record[key] for record in tables[relation]),
         "lddate": compiled}
        for key, relation in NUMBERED.items()]
    write_tables(schema, tables, folder, DATABASE)
    return tables


def travel_time_problems():
    problems = []
    for depth, degrees, phase, published in PUBLISHED_TIMES:
        computed = DirectWave(phase, depth).seconds(degrees)
        if abs(computed - published) > PUBLISHED_TOLERANCE_SECONDS:
            problems.append(f"{phase} from {depth} km at {degrees} degrees takes {computed:.2f} s, "
                            f"published {published:.2f} s")
    return problems


def check(feed, schema_path, folder):
    result = TableCheck(schema_path, folder, DATABASE)
    result.problems += travel_time_problems()
    expected = {"origin", "event", "netmag", "origerr", "remark", "site", "network",
                "affiliation", "arrival", "assoc", "lastid"}
    for relation in sorted(expected - {name for name, rows in result.tables.items() if rows}):
        result.problems.append(f"{DATABASE}.{relation} is missing or empty")
    if feed and not result.problems:
        result.compare_with_feed(feed)
    for relation, rows in sorted(result.tables.items()):
        print(f"{relation:12} {len(rows):6} records")
    for problem in result.problems[:50]:
        print(problem, file=sys.stderr)
    print(f"{result.values_checked} values checked{', feed compared' if feed else ''}: "
          f"{len(result.problems)} problems")
    return not result.problems


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("feed", nargs="?", help="earthquakes.json")
    parser.add_argument("--check", action="store_true", help="check instead of making")
    parser.add_argument("--schema", default=HERE.parent / "schemas" / "css3.0.yaml")
    parser.add_argument("--out", default=HERE, help="folder of the tables")
    arguments = parser.parse_args()
    if not arguments.feed and not arguments.check:
        parser.error("the feed's file is needed to make the tables")
    feed = None
    if arguments.feed:
        feed = json.loads(Path(arguments.feed).read_text("utf-8"))
    if arguments.check:
        return 0 if check(feed, arguments.schema, arguments.out) else 1
    for relation, records in make(feed, arguments.schema, arguments.out).items():
        print(f"{relation:12} {len(records):6} records")
    return 0


if __name__ == "__main__":
    sys.exit(main())
