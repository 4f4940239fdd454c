#!/usr/bin/env python3
"""Takes the pictures of docs/user-guide.md: what a user sees, on a display of its own."""

import argparse
import pathlib
import subprocess
import sys
import tempfile
import time

from derive_e2e import FIRST_CELL, make_large
from hands import Hands
from harness import Session, copy_of, focus_table
from virtual_display import Display, missing_programs, wait_until

SCREEN = (1120, 620)


class Camera:
    def __init__(self, display, folder):
        self.display = display
        self.folder = folder

    def take(self, name):
        """The screen when it stands still, without the mouse on anything."""
        self.display.move(SCREEN[0] - 2, SCREEN[1] - 2)
        self.display.settled_picture()
        self.take_at_once(name)

    def take_at_once(self, name):
        """The whole screen, in few colours so that the file stays small."""
        file = str(self.folder / (name + ".png"))
        subprocess.run(["import", "-window", "root", "+dither", "-colors", "48", "-depth", "8", "-strip", file],
                       env=self.display.environment, check=True, timeout=60)
        print(file, flush=True)


def fill_screen(session):
    session.display.tool("windowmove", "--sync", session.window, 0, 0)
    session.display.tool("windowsize", "--sync", session.window, SCREEN[0] - 2, SCREEN[1] - 26)


def take_start_page(display, arguments, home, camera):
    session = Session(display, arguments, home)
    process = display.start([session.program], session.environment)
    window = wait_until(lambda: display.windows("--name", "^ovedit$"), "the start page")[0]
    session.window = window
    fill_screen(session)
    camera.take("start")
    display.key("ctrl+n")
    wait_until(lambda: display.windows("--name", "^New Database$"), "the dialog")
    display.tool("type", "--delay", "12", "shaking")
    camera.take("new-database")
    display.key("Escape")
    display.key("ctrl+q")
    process.wait(20)


def take_tables(session, hands, camera):
    display = session.display
    focus_table(session, "arrival")
    camera.take("table")
    display.tool("mousemove", "--window", session.window, 230, 69)
    time.sleep(1.5)
    camera.take_at_once("tooltip")
    hands.open_menu("d")
    display.key("j")
    camera.take("derive-menu")
    display.key("Escape", "Escape", "Escape")
    hands.by_key("subset")
    hands.dialog("ovedit")
    hands.types("time >= '2018-02-06' && ar")
    camera.take("expression")
    display.key("Escape")
    hands.types("rid > 2500")
    time.sleep(1)
    camera.take("fault")
    display.key(*["BackSpace"] * 12)
    hands.types("iphase == 'P'")
    display.key("Return")
    hands.dialog("Get View Name")
    hands.types("tuesday")
    camera.take("view-name")
    display.key("Return")
    wait_until(lambda: session.table() == "tuesday", "the view")
    hands.back()
    hands.by_key("join", 1)
    hands.name_view("located")
    camera.take("view")
    hands.by_key("sort")
    hands.dialog("Sort fields")
    display.key("Return")
    camera.take("sort")
    display.key("Escape")
    hands.back()


def take_copying_and_printing(session, hands, camera):
    display = session.display
    focus_table(session, "arrival")
    hands.click(session.window, *FIRST_CELL)
    display.key("ctrl+Home", *["shift+Right"] * 3, *["shift+Down"] * 5)
    hands.open_menu("e")
    camera.take("copy")
    display.key("Escape", "Escape")
    hands.back()
    hands.click(session.window, *FIRST_CELL)
    display.key("ctrl+p")
    preview = hands.dialog("Print quakes.arrival", 60)
    display.tool("windowmove", "--sync", preview, 30, 30)
    display.tool("windowsize", "--sync", preview, SCREEN[0] - 100, SCREEN[1] - 100)
    hands.click(preview, 29, 20)  # as wide as the window
    camera.take("print")
    display.key("Escape")
    hands.back()


def take_german(display, arguments, home, camera):
    session = Session(display, arguments, home)
    session.environment["LANGUAGE"] = "de"
    session.start()
    fill_screen(session)
    focus_table(session, "arrival")
    Hands(session).open_menu("b")
    display.key("v")
    camera.take("german")
    display.key("Escape", "Escape", "Escape")
    session.end()


def take_progress(session, hands, camera):
    focus_table(session, "arrival")
    hands.by_key("theta join", 1)
    hands.give_expression("distance(lat, lon, 0, 0) * arid == 100")
    hands.dialog("Get View Name")
    session.display.key("Escape")
    hands.dialog("Working")
    time.sleep(4)
    camera.take_at_once("progress")
    session.display.key("Escape")
    hands.back()


def take_undo(display, arguments, home, camera):
    with tempfile.TemporaryDirectory() as folder:
        session = Session(display, arguments, home, ["--read-write"])
        session.database = copy_of(arguments.database, folder)
        session.start()
        fill_screen(session)
        hands = Hands(session)
        focus_table(session, "arrival")
        hands.open_menu("r")
        display.key("e")
        display.tool("mousemove", "--window", session.window, 90, 86, "click", 1)
        display.key("ctrl+Home", "F2", "ctrl+a")
        hands.types("ANMO")
        display.key("Return")
        hands.open_menu("r")
        camera.take("undo")
        display.key("Escape", "Escape")
        session.end()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ovedit", required=True)
    parser.add_argument("--database", required=True, type=pathlib.Path)
    parser.add_argument("--pictures", required=True, type=pathlib.Path, help="folder to write to")
    arguments = parser.parse_args()
    absent = missing_programs()
    if absent:
        sys.exit("this needs " + ", ".join(absent) + ": run scripts/setup")
    arguments.pictures.mkdir(parents=True, exist_ok=True)
    with Display(*SCREEN) as display, tempfile.TemporaryDirectory() as home:
        camera = Camera(display, arguments.pictures)
        take_start_page(display, arguments, home, camera)
        session = Session(display, arguments, home)
        session.start()
        fill_screen(session)
        take_copying_and_printing(session, Hands(session), camera)
        take_tables(session, Hands(session), camera)
        session.end()
        take_german(display, arguments, home, camera)
        take_undo(display, arguments, home, camera)
        arguments.database = make_large(arguments.database, home)
        session = Session(display, arguments, home)
        session.start()
        fill_screen(session)
        take_progress(session, Hands(session), camera)
        session.end()


if __name__ == "__main__":
    main()
