#!/usr/bin/env python3
"""A user makes a new database by keyboard from the page that ovedit starts with, and a first record in it."""

import argparse
import os
import pathlib
import sys
import tempfile

from ovedit_e2e import Session, check
from virtual_display import Display, missing_programs, wait_until


def run(arguments):
    with Display() as display, tempfile.TemporaryDirectory() as home:
        session = Session(display, arguments, home)
        session.process = display.start([arguments.ovedit], session.environment, cwd=home)
        session.window = wait_until(lambda: session.alive() and display.windows("--name", "^ovedit$"),
                                    "the start page")[0]
        display.tool("windowactivate", "--sync", session.window)
        display.key("ctrl+n")
        wait_until(lambda: display.windows("--name", "^New Database$"), "the dialog")
        display.tool("type", "--delay", "12", "shaking")
        display.settled_picture(str(arguments.pictures / "dialog.png"))
        display.key("Return")
        display.settled_picture(str(arguments.pictures / "created.png"))
        database = pathlib.Path(home, "shaking")
        wait_until(database.is_file, "the descriptor")
        wait_until(lambda: display.windows("--name", "^shaking"), "the window of the database")
        check("css3.0" in database.read_text(), "the schema offered first is one that is installed")
        session.window = display.windows("--name", "^shaking")[0]
        display.settled_picture(str(arguments.pictures / "empty.png"))
        # Again: the file that is there is in the way, and stays.
        before = database.read_bytes()
        display.key("ctrl+n")
        wait_until(lambda: display.windows("--name", "^New Database$"), "the dialog again")
        display.tool("type", "--delay", "12", "shaking")
        display.settled_picture(str(arguments.pictures / "refused.png"))
        display.key("Return")
        display.settled_picture()
        check(display.windows("--name", "^New Database$"), "the dialog stays while the name is taken")
        display.key("Escape")
        wait_until(lambda: not display.windows("--name", "^New Database$"), "the dialog to close")
        check(database.read_bytes() == before, "the file that was there is as it was")
        check(session.end() == 0, "ovedit ends well")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ovedit", required=True)
    parser.add_argument("--database", required=True, type=pathlib.Path)
    parser.add_argument("--pictures", required=True, type=pathlib.Path, help="folder for what was seen")
    arguments = parser.parse_args()
    absent = missing_programs()
    if absent:
        sys.exit("this test needs " + ", ".join(absent) + ": run scripts/setup")
    os.makedirs(arguments.pictures, exist_ok=True)
    try:
        run(arguments)
    except AssertionError as error:
        sys.exit(f"FAILED {error}; pictures are in {arguments.pictures}")


if __name__ == "__main__":
    main()
