"""The operations in SQLite, without indexes and with them, in memory."""
import csv
import sqlite3
import time

SQL_ORDERED = "select count(*), sum(r * (n % 1009 + 1)) from (select r, rowid - 1 as n from answer)"


def sql_unordered(fields):
    return f"select count(*), sum(({fields}) % 1000003) from answer"


SQLITE = {
    "subset_station": ("select rowid - 1 as r from arrival where sta = 'GPDB' order by rowid", SQL_ORDERED),
    "subset_range": ("select rowid - 1 as r from arrival where time >= 1000000000 and time < 1150000000 "
                     "and snr > 10 order by rowid", SQL_ORDERED),
    "sort_time": ("select rowid - 1 as r from arrival order by time", SQL_ORDERED),
    "sort_sta_time": ("select rowid - 1 as r from arrival order by sta, time", SQL_ORDERED),
    "join": ("select a.rowid - 1 as a, s.rowid - 1 as s, o.rowid - 1 as o from arrival a join assoc s using (arid) "
             "join origin o using (orid)", sql_unordered("31 * a + 17 * s + 7 * o")),
    "group_sta": ("select sta, count(*) as n, group_concat(rowid - 1) as rows from arrival group by sta",
                  "select count(*), sum(n * n) from answer"),
    "nojoin": ("select rowid - 1 as r from arrival where arid not in (select arid from assoc)",
               sql_unordered("31 * r")),
    "interval_join": ("select a.rowid - 1 as a, s.rowid - 1 as s from arrival a join site s on a.sta = s.sta "
                      "and a.jdate >= s.ondate and a.jdate <= case s.offdate when -1 then 9999999 else s.offdate end",
                      sql_unordered("31 * a + 17 * s")),
    "theta_join": ("select a.rowid - 1 as a, s.rowid - 1 as s from arrival a join site s on a.sta = s.sta "
                   "and a.jdate >= s.ondate and a.jdate < s.offdate and s.offdate <> -1",
                   sql_unordered("31 * a + 17 * s")),
    "find_last": ("select min(rowid) - 1 as r from arrival where time = "
                  "(select time from arrival where rowid = (select max(rowid) from arrival))",
                  "select 1, r from answer"),
}
SQLITE_INDEXES = ["arrival(sta, time)", "arrival(time)", "arrival(arid)", "assoc(arid)", "assoc(orid)", "origin(orid)",
                  "site(sta)"]
TEXT_COLUMNS = {"sta", "chan", "iphase", "stype", "clip", "fm", "qual", "auth", "phase", "timedef", "azdef", "slodef",
                "vmodel", "etype", "dtype", "algorithm", "staname", "statype", "refsta"}


def sqlite_tables(folder):
    database = sqlite3.connect(":memory:")
    for name in ("arrival", "assoc", "origin", "site"):
        with open(folder / f"{name}.csv", encoding="utf-8") as file:
            fields = file.readline().strip().split(",")
            kinds = ["text" if field in TEXT_COLUMNS else "numeric" for field in fields]
            database.execute(f"create table {name} ({', '.join(map(' '.join, zip(fields, kinds)))})")
            # No text of ours has a comma but staname, which is quoted.
            reader = (line.rstrip("\n").split(",") for line in file) if name != "site" else csv.reader(file)
            database.executemany(f"insert into {name} values ({', '.join('?' * len(fields))})", reader)
    database.commit()
    return database


def measure_sqlite(folder, rows, runs, results):
    database = sqlite_tables(folder)
    for engine in ("sqlite", "sqlite-indexed"):
        if engine == "sqlite-indexed":
            for index, of in enumerate(SQLITE_INDEXES):
                database.execute(f"create index i{index} on {of}")
            database.execute("analyze")
        for name, (query, check) in SQLITE.items():
            # Without an index it makes one for each join, which counts.
            for _ in range(runs):
                database.execute("drop table if exists answer")
                start = time.perf_counter()
                database.execute(f"create temp table answer as {query}")
                taken = time.perf_counter() - start
                count, checksum = database.execute(check).fetchone()
                results.add([{"engine": engine, "operation": name, "mode": "again", "rows": rows, "ms": 1e3 * taken,
                              "version": sqlite3.sqlite_version, "count": count, "checksum": checksum}])
