#!/usr/bin/env python3
"""Changes records in ovedit as its users do, with mouse and keyboard, takes changes back, and checks the files."""

import argparse
import pathlib
import shutil
import sys
import tempfile
import time

from derive_e2e import Hands
from ovedit_e2e import Session, check, focus_table, patiently
from virtual_display import Display, missing_programs, wait_until

TABLE = "affiliation"  # short, and every cell of it is seen
SIGN = 120  # pixels at the end of the menu bar


class Table:
    """The table's file, as another program finds it."""

    def __init__(self, database):
        self.file = database.with_name(database.name + "." + TABLE)

    def values(self, first, width):
        return [line[first:first + width].strip() for line in self.file.read_text().splitlines()]

    def networks(self):
        return self.values(0, 8)

    def stations(self):
        return self.values(9, 6)

    def comes_to(self, expected, what):
        wait_until(lambda: expected(self), what, 20)
        check(True, what)


def copy_of_demo(database, folder):
    for file in database.parent.iterdir():
        if file.name.startswith(database.name) and file.is_file():
            shutil.copy(file, folder)
    copied = pathlib.Path(folder, database.name)
    if (database.parent / "schemas").is_dir():
        shutil.copytree(database.parent / "schemas", pathlib.Path(folder, "schemas"))
    return copied


def rows_menu(session, hands, letter):
    patiently(hands.open_menu, "r")
    session.display.key(letter)
    wait_until(lambda: session.popups() == 1, "the menu to close", 10)


def sign(session, picture):
    x, y, width, _ = session.display.place(session.window)
    return picture.part(x + width - SIGN, y, SIGN, 26)


def edit_a_cell(session, hands, table):
    before = table.stations()
    session.display.tool("mousemove", "--window", session.window, 90, 86, "click", 1)
    session.display.key("ctrl+Home", "F2")
    hands.types("CHANGED")
    session.display.key("Escape")
    time.sleep(0.5)
    check(table.stations() == before, "cells can't be typed into while editing is off")
    off = session.see("editing_off")
    rows_menu(session, hands, "e")
    on = session.see("editing_on")
    check(sign(session, on) != sign(session, off), "the sign in the menu bar shows that editing is on")
    session.display.key("ctrl+Home", "F2")
    session.display.key("ctrl+a")
    hands.types("XX")
    session.display.key("Return")
    table.comes_to(lambda t: t.networks()[0] == "XX", "a cell is edited and in the file")
    session.see("edited")


def undo_and_redo(session, table, before):
    session.display.key("ctrl+z")
    table.comes_to(lambda t: t.networks() == before, "Ctrl+Z takes it back")
    session.display.key("ctrl+shift+z")
    table.comes_to(lambda t: t.networks()[0] == "XX", "Ctrl+Shift+Z does it again")
    session.display.key("ctrl+z")
    table.comes_to(lambda t: t.networks() == before, "and Ctrl+Z takes it back again")


def change_all(session, hands, table, before):
    session.display.tool("mousemove", "--window", session.window, 104, 69, "click", 3)
    hands.popup()
    session.see("column_menu")
    session.display.key("Down", "Down", "Down", "Return")
    hands.dialog("Get Value for 'net':")
    hands.types("YY")
    session.display.key("Return")
    hands.dialog("Change Values")
    session.see("change_all_question")
    session.display.key("Return")
    table.comes_to(lambda t: set(t.networks()) == {"YY"}, "Change All puts one value into every row")
    hands.back()
    patiently(hands.open_menu, "r")
    session.see("undo_in_the_menu")
    session.display.key("u")
    table.comes_to(lambda t: t.networks() == before, "one undo, from the menu, takes all of them back")


def mark_rows(session, hands, table):
    before = table.stations()
    session.display.tool("mousemove", "--window", session.window, 90, 86, "click", 1)
    rows_menu(session, hands, "m")
    table.comes_to(lambda t: t.stations()[0] == "-", "a row is marked without a question")
    session.display.key("ctrl+z")
    table.comes_to(lambda t: t.stations() == before, "Ctrl+Z brings its values back")


def run(arguments, display, home):
    session = Session(display, arguments, home, ["--read-write"])
    session.start()
    hands = Hands(session)
    focus_table(session, TABLE)
    table = Table(arguments.database)
    before = table.networks()
    check(len(before) > 1, "the table has several rows")
    edit_a_cell(session, hands, table)
    undo_and_redo(session, table, before)
    change_all(session, hands, table, before)
    mark_rows(session, hands, table)
    check(table.networks() == before, "in the end everything is as it was")
    check(session.end() == 0, "ovedit ends well")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--ovedit", required=True)
    parser.add_argument("--database", required=True, type=pathlib.Path)
    parser.add_argument("--pictures", required=True, type=pathlib.Path)
    arguments = parser.parse_args()
    absent = missing_programs()
    if absent:
        sys.exit("this test needs " + ", ".join(absent) + ": run scripts/setup")
    arguments.pictures.mkdir(parents=True, exist_ok=True)
    with Display() as display, tempfile.TemporaryDirectory() as home, tempfile.TemporaryDirectory() as folder:
        arguments.database = copy_of_demo(arguments.database, folder)
        try:
            run(arguments, display, home)
        except AssertionError as error:
            display.picture(str(arguments.pictures / "failure.png"))
            sys.exit(f"FAILED {error}; pictures are in {arguments.pictures}")


if __name__ == "__main__":
    main()
