"""The window from outside, beside that of DB Browser for SQLite: the same rows, the same display, the same hands."""
import os
import pathlib
import shutil
import sqlite3
import statistics
import struct
import subprocess
import sys
import tempfile
import time
import zlib
from typing import Callable, NamedTuple, Optional, Tuple

from comparison.ours import read_through
from comparison.results import say
from comparison.sqlite_engine import TEXT_COLUMNS

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "tests" / "e2e"))

from virtual_display import Display, missing_programs, wait_until  # noqa: E402

HOW_TO_GET = "the Debian package sqlitebrowser: apt-get install sqlitebrowser"
SIZE = (1280, 900)
WINDOW = (20, 40, 1200, 800)  # where windows are put: x, y, width, height
PAGES = 100
QUIET_SECONDS = 1.0
TICK = os.sysconf("SC_CLK_TCK")


class Browser(NamedTuple):
    """Places are those of the display, as windows are always put in the same place."""

    name: str
    command: Callable  # of the programs' folder, the catalogue and the SQLite database
    title: str
    rows: Tuple[int, int, int, int]  # what is watched: cells alone
    time_header: Tuple[int, int]
    cell: Tuple[int, int]
    tab: Optional[Tuple[int, int]]  # is clicked so that the table is shown


BROWSERS = [
    Browser("ovedit", lambda programs, path, database: [programs / "ovedit", f"{path}.arrival"], "ovedit$",
            (34, 142, 1150, 660), (347, 131), (150, 250), None),
    # With its option -t it asks whether to abort what it does itself; the table is shown by a click on "Browse Data".
    Browser("DB Browser for SQLite", lambda programs, path, database: ["sqlitebrowser", "-R", database],
            "^DB Browser for SQLite - ", (30, 230, 630, 520), (238, 191), (134, 270), (229, 119)),
]


def missing():
    absent = missing_programs()
    if absent:
        return f"{', '.join(absent)}: run scripts/setup"
    return None if shutil.which("sqlitebrowser") else HOW_TO_GET


def make_database(csv, database):
    """The arrivals as a table of SQLite, without indexes."""
    say("a database of SQLite")
    connection = sqlite3.connect(database)
    connection.execute("pragma journal_mode = off")
    connection.execute("pragma synchronous = off")
    with open(csv / "arrival.csv", encoding="utf-8") as file:
        fields = file.readline().strip().split(",")
        columns = ", ".join(f"{field} {'text' if field in TEXT_COLUMNS else 'numeric'}" for field in fields)
        connection.execute(f"create table arrival ({columns})")
        rows = (line.rstrip("\n").split(",") for line in file)
        connection.executemany(f"insert into arrival values ({', '.join('?' * len(fields))})", rows)
    connection.commit()
    connection.close()


class FrameBuffer:
    """What is on the display, read from the server's memory: an X window dump."""

    def __init__(self, folder):
        self.file = open(folder / "Xvfb_screen0", "rb")
        header = struct.unpack(">25I", self.file.read(100))
        self.first = header[0] + 12 * header[19]  # after the header and the colours
        self.line = header[12]

    def sum_of(self, x, y, width, height):
        checksum = 0
        for row in range(y, y + height):
            checksum = zlib.adler32(os.pread(self.file.fileno(), 4 * width, self.first + row * self.line + 4 * x), checksum)
        return checksum


class Session:
    def __init__(self, display, frames, browser, command, home):
        self.display, self.frames, self.browser = display, frames, browser
        self.environment = dict(display.environment, HOME=home, XDG_CONFIG_HOME=home + "/config",
                                XDG_RUNTIME_DIR=home, QT_STYLE_OVERRIDE="Fusion")
        self.began = time.perf_counter()
        self.process = display.start(list(map(str, command)), self.environment)
        self.window = wait_until(lambda: display.windows("--name", browser.title), f"a window {browser.title}")[0]
        for how, place in (("windowmove", WINDOW[:2]), ("windowsize", WINDOW[2:])):
            display.tool(how, self.window, *place)

    def processor(self):
        with open(f"/proc/{self.process.pid}/stat", encoding="utf-8") as file:
            fields = file.read().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / TICK

    def peak_mebibytes(self):
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as file:
            return next(int(line.split()[1]) / 1024 for line in file if line.startswith("VmHWM"))

    def seen(self):
        return self.frames.sum_of(*self.browser.rows)

    def settle(self, since, seconds=300):
        """Seconds since then until the table changed last: it has stood still and the program has rested."""
        end = since + seconds
        seen, changed = self.seen(), time.perf_counter()
        used, rested = self.processor(), changed
        while time.perf_counter() < end:
            time.sleep(0.005)
            now = time.perf_counter()
            if (seen_now := self.seen()) != seen:
                seen, changed = seen_now, now
            if (used_now := self.processor()) > used + 1 / TICK:  # a blinking cursor is no work
                used, rested = used_now, now
            if now - max(changed, rested) > QUIET_SECONDS:
                return changed - since
        raise AssertionError(f"{self.browser.name} does not come to rest")

    def timed(self, action):
        """Seconds until the table stands still, and of the processor."""
        before, used = self.seen(), self.processor()
        since = time.perf_counter()
        action()
        taken = self.settle(since)
        if self.seen() == before:
            raise AssertionError(f"{self.browser.name}: nothing has changed")
        return taken, self.processor() - used

    def page_downs(self):
        for _ in range(PAGES):
            before = self.seen()
            self.display.tool("key", "Next")
            wait_until(lambda: self.seen() != before, "another page")


def measure_once(browser, command, pictures):
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory() as home, \
            Display(*SIZE, server_options=["-fbdir", folder]) as display:
        session = Session(display, FrameBuffer(pathlib.Path(folder)), browser, command, home)
        start = session.settle(session.began)
        if browser.tab:
            start += session.timed(lambda: display.click(*browser.tab))[0]
        answer = {"start": start, "start, processor": session.processor()}

        def picture(what):
            display.picture(str(pictures / f"{browser.name.split()[0]} {what}.png"))

        picture("started")
        display.click(*browser.cell)
        session.settle(time.perf_counter())
        used = session.processor()
        session.page_downs()
        session.settle(time.perf_counter())
        answer["pages, processor"] = session.processor() - used
        picture("pages")
        for what, action in (("last row", lambda: display.key("ctrl+End")), ("first row", lambda: display.key("ctrl+Home")),
                             ("sort", lambda: display.click(*browser.time_header))):
            answer[what], answer[what + ", processor"] = session.timed(action)
            picture(what)
        answer["memory"] = session.peak_mebibytes()
        return answer


def measure_browsers(programs, path, database, runs, pictures, results):
    """In turn, so that what else the machine does meets both, and with the files in the page cache. Pictures of the last
    run are left in a folder."""
    pictures.mkdir(exist_ok=True)
    taken = {browser.name: [] for browser in BROWSERS}
    for _ in range(runs):
        for browser in BROWSERS:
            say(f"{browser.name}, {path.name}")
            read_through(database)
            read_through(f"{path}.arrival")
            taken[browser.name].append(measure_once(browser, browser.command(programs, path, database), pictures))
    results.set_figures(version=version(), database_bytes=os.path.getsize(database), browsers={
        name: {what: statistics.median(one[what] for one in all_runs) for what in all_runs[0]}
        for name, all_runs in taken.items()})


def version():
    listed = subprocess.run(["dpkg-query", "-W", "-f", "${Version}", "sqlitebrowser"], stdout=subprocess.PIPE, text=True,
                            check=False)
    return listed.stdout or "of unknown version"
