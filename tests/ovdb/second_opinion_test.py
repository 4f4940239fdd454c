"""Queries over the demo database, compared with what SQLite makes of the same tables."""

import csv
import io
import re
import sqlite3
import unittest

from program import DEMO, SOURCE, ProgramTest

TABLES = ("origin", "event", "netmag", "arrival", "assoc", "site", "remark")
TYPES = {"real": float, "time": float, "integer": int, "yearday": int, "string": str}


def read_schema():
    """Types and widths of attributes and fields of relations, read by rules that fit this one schema alone."""
    text = (SOURCE / "schemas/css3.0.yaml").read_text()
    attributes = {name: (kind, int(width)) for name, kind, width in
                  re.findall(r"^  (\w+):\n    type: (\w+)\n    width: (\d+)\n", text, re.M)}
    relations = {name: re.findall(r"\w+", fields) for name, fields in
                 re.findall(r"^  (\w+):\n    fields: \[(.*?)\]", text, re.M | re.S)}
    return attributes, relations


class SecondOpinion(ProgramTest):
    @classmethod
    def setUpClass(cls):
        cls.attributes, cls.relations = read_schema()
        cls.sqlite = sqlite3.connect(":memory:")
        for table in TABLES:
            fields = cls.relations[table]
            cls.sqlite.execute(f"create table {table} (row integer, {', '.join(fields)})")
            for number, line in enumerate((DEMO.parent / f"quakes.{table}").read_text().splitlines()):
                values, at = [number], 0
                for name in fields:
                    kind, width = cls.attributes[name]
                    values.append(TYPES[kind](line[at:at + width].strip()))
                    at += width + 1
                marks = ", ".join("?" * len(values))
                cls.sqlite.execute(f"insert into {table} values ({marks})", values)

    @classmethod
    def tearDownClass(cls):
        cls.sqlite.close()

    def agree(self, table, options, query, least=1):
        text = self.output("select", f"{DEMO}.{table}", *options, "--format", "csv", "--no-header")
        rows = list(csv.reader(io.StringIO(text)))
        expected = [tuple(row) for row in self.sqlite.execute(query)]
        self.assertGreaterEqual(len(expected), least, query)
        self.assertEqual(len(rows), len(expected))
        for row, other in zip(rows, expected):
            self.assertEqual(tuple(type(value)(text) for text, value in zip(row, other)), other)
        count = self.output("select", f"{DEMO}.{table}", *options, "--count")
        self.assertEqual(int(count), len(expected))

    def test_subset(self):
        self.agree("origin", ["--subset", "ml > 2.5 && depth < 20 || lat > 60", "--fields", "orid,ml,depth,lat"],
                   "select orid, ml, depth, lat from origin where ml > 2.5 and ml != -999 and depth < 20"
                   " and depth != -999 or lat > 60 order by row", 100)

    def test_subset_by_text(self):
        self.agree("remark", ["--subset", "remark =~ 'Alaska$'", "--fields", "commid,remark"],
                   "select commid, remark from remark where remark like '%Alaska' order by row", 10)

    def test_sort(self):
        self.agree("origin", ["--sort", "auth,depth", "--fields", "auth,depth,orid"],
                   "select auth, depth, orid from origin order by auth, depth, row", 1000)
        self.agree("origin", ["--sort", "auth,depth", "--reverse", "--fields", "auth,depth,orid"],
                   "select auth, depth, orid from origin order by auth desc, depth desc, row", 1000)

    def test_sort_unique(self):
        self.agree("arrival", ["--sort", "sta,iphase", "--unique", "--fields", "sta,iphase"],
                   "select distinct sta, iphase from arrival order by sta, iphase", 50)

    def test_group(self):
        self.agree("arrival", ["--group", "sta,iphase", "--fields", "sta,iphase,bundle"],
                   "with counted as (select sta, iphase, count(*) as n from arrival group by sta, iphase),"
                   " summed as (select sta, iphase, n, sum(n) over (order by sta, iphase) as last from counted)"
                   " select sta, iphase, (last - n) || '-' || last from summed order by sta, iphase", 50)

    def test_joins(self):
        self.agree("origin", ["--join", "assoc", "--join", "arrival", "--fields", "orid,arid,sta,arrival.sta"],
                   "select o.orid, s.arid, s.sta, a.sta from origin o join assoc s on s.orid = o.orid"
                   " join arrival a on a.arid = s.arid order by o.row, s.row, a.row", 1000)

    def test_left_join(self):
        self.agree("assoc", ["--left-join", "origin", "--fields", "orid,arid"],
                   "select o.orid, s.arid from origin o join assoc s on s.orid = o.orid order by o.row, s.row", 1000)

    def test_outer_join(self):
        self.agree("origin", ["--outer-join", "assoc", "--fields", "orid,arid"],
                   "select o.orid, coalesce(s.arid, -1) from origin o left join assoc s on s.orid = o.orid"
                   " order by o.row, s.row", 1000)

    def test_no_join(self):
        self.agree("origin", ["--no-join", "assoc", "--fields", "orid"],
                   "select orid from origin where orid not in (select orid from assoc) order by row", 100)

    def test_theta_join(self):
        self.agree("origin", ["--subset", "ml >= 4 && ml != -999", "--theta-join", "netmag",
                              "origin.evid == netmag.evid && magnitude > 4", "--fields", "orid,magid,magnitude"],
                   "select o.orid, n.magid, n.magnitude from origin o join netmag n on o.evid = n.evid"
                   " where o.ml >= 4 and n.magnitude > 4 order by o.row, n.row")

    def test_sever_and_separate(self):
        joined = ["--join", "assoc", "--join", "arrival"]
        self.agree("origin", [*joined, "--sever", "assoc", "--sever", "arrival", "--fields", "orid"],
                   "select orid from origin where orid in (select orid from assoc) order by row", 15)
        self.agree("origin", [*joined, "--subset", "iphase == 'S'", "--separate", "arrival", "--fields", "arid"],
                   "select arid from arrival where iphase = 'S' and arid in (select arid from assoc) order by row", 100)

    def test_group_and_ungroup(self):
        self.agree("arrival", ["--group", "sta", "--sort", "sta", "--reverse", "--ungroup", "--fields", "sta,arid"],
                   "select sta, arid from arrival order by sta desc, row", 1000)


if __name__ == "__main__":
    unittest.main()
