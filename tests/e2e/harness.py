"""What the end-to-end tests share: how they are called, the program that they look at, and how a failure is told."""

import argparse
import pathlib
import re
import shutil
import sys
import tempfile
import time
import traceback

from virtual_display import Display, missing_programs, wait_until

WINDOW = (30, 40, 1180, 700)  # where the window is put: x, y, width, height
MAIN_TITLE = r"^quakes\..* ovedit$"


def check(condition, what):
    if not condition:
        raise AssertionError(what)
    print("ok   ", what, flush=True)


def patiently(action, *arguments):
    """Does something with mouse or keyboard up to three times. On a busy machine a tooltip may go before it is
    looked at, or a key arrive while a menu is still closing; what is broken fails every time."""
    for remaining in (2, 1, 0):
        try:
            return action(*arguments)
        except AssertionError as error:
            if not remaining:
                raise
            print("again", error, flush=True)
            time.sleep(1)
    return None


def tables_of(database):
    """The tables that have a file beside the descriptor."""
    prefix = database.name + "."
    return {path.name[len(prefix):] for path in database.parent.iterdir() if path.name.startswith(prefix)}


def copy_of(database, folder):
    """A copy of a database that may be changed: its descriptor."""
    for file in database.parent.iterdir():
        if file.name.startswith(database.name) and file.is_file():
            shutil.copy(file, folder)
    if (database.parent / "schemas").is_dir():
        shutil.copytree(database.parent / "schemas", pathlib.Path(folder, "schemas"))
    return pathlib.Path(folder, database.name)


class Session:
    def __init__(self, display, arguments, home, options=()):
        self.display = display
        self.database = arguments.database
        self.pictures = arguments.pictures
        self.program = arguments.ovedit
        self.options = options
        environment = dict(display.environment, HOME=home, XDG_CONFIG_HOME=home + "/config", QT_STYLE_OVERRIDE="Fusion")
        environment.pop("ORVANE_SCHEMA_PATH", None)
        self.settings = pathlib.Path(home, "config", "Orvane", "ovedit.conf")
        self.environment = environment
        self.process = None
        self.window = None

    def launch(self, title, *arguments, **options):
        """Starts the program and waits for its window."""
        self.process = self.display.start_program([self.program, *arguments], self.environment, **options)
        self.window = wait_until(lambda: self.display.windows("--name", title), f"a window {title}")[0]
        self.display.tool("windowactivate", "--sync", self.window)

    def start(self):
        self.launch(MAIN_TITLE, *self.options, self.database)
        self.display.tool("windowmove", "--sync", self.window, WINDOW[0], WINDOW[1])
        self.display.tool("windowsize", "--sync", self.window, WINDOW[2], WINDOW[3])
        self.display.move(self.display.size[0] - 5, self.display.size[1] - 5)
        self.display.settled_picture()

    def end(self):
        self.display.tool("windowactivate", "--sync", self.window)
        self.display.key("ctrl+q")
        return self.display.end_program(self.process)

    def table(self):
        """The table named in the title."""
        return re.match(r"quakes\.(\S+) ", self.display.title(self.window)).group(1)

    def inside(self):
        """Position and size of the table area: below tabs and header, above the labels."""
        x, y, width, height = self.display.place(self.window)
        return x + 12, y + 80, width - 24, height - 140

    def see(self, name):
        return self.display.settled_picture(str(self.pictures / (name + ".png")))

    def popups(self):
        return len(self.display.windows("--class", "ovedit"))


def session_on_a_copy(arguments, display, home):
    """A started session that may change its database, which is a copy."""
    folder = pathlib.Path(home, "database")
    folder.mkdir()
    arguments.database = copy_of(arguments.database, folder)
    session = Session(display, arguments, home, ["--read-write"])
    session.start()
    return session


def focus_table(session, table):
    for _ in tables_of(session.database):
        before = session.table()
        if before == table:
            return
        session.display.key("ctrl+Next")
        wait_until(lambda: session.table() != before, "the next tab")
    check(session.table() == table, f"{table} is shown")


def main(run, description):
    """The main function of a test: run(arguments, display, home), which fails by an exception. `home` is a new folder."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--ovedit", required=True, type=pathlib.Path)
    parser.add_argument("--database", required=True, type=pathlib.Path)
    parser.add_argument("--pictures", required=True, type=pathlib.Path, help="folder for what was seen")
    arguments = parser.parse_args()
    arguments.ovedit = arguments.ovedit.resolve()  # the program may be started in another folder
    absent = missing_programs()
    if absent:
        sys.exit("this test needs " + ", ".join(absent) + ": run scripts/setup")
    arguments.pictures.mkdir(parents=True, exist_ok=True)
    failure = arguments.pictures / "failure.png"
    failure.unlink(missing_ok=True)
    with Display() as display, tempfile.TemporaryDirectory() as home:
        try:
            run(arguments, display, home)
        except Exception as error:  # whatever it is, the display goes with us: it is looked at now
            display.picture(str(failure))
            if not isinstance(error, AssertionError):
                traceback.print_exc()
            sys.exit(f"FAILED {error}\n\nat the end:\n{display.state()}\n\npictures are in {arguments.pictures}, "
                     f"the last one is {failure}")
