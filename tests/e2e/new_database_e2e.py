#!/usr/bin/env python3
"""A user makes a new database by keyboard from the page that ovedit starts with, and a first record in it."""

import pathlib

from harness import Session, check, main
from virtual_display import wait_until


def run(arguments, display, home):
    session = Session(display, arguments, home)
    session.launch("^ovedit$", cwd=home)
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


if __name__ == "__main__":
    main(run, __doc__)
