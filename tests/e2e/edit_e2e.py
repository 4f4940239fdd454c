#!/usr/bin/env python3
"""Changes records in ovedit as its users do, with mouse and keyboard, takes changes back, and checks the files."""

import time

from hands import Hands
from harness import check, focus_table, main, patiently, session_on_a_copy
from virtual_display import wait_until

TABLE = "affiliation"  # short, and every cell of it is seen
SIGN = 120  # pixels at the end of the menu bar


class Table:
    """The table's file, as another program finds it."""

    def __init__(self, database, name=TABLE):
        self.file = database.with_name(database.name + "." + name)

    def values(self, first, width):
        return [line[first:first + width].strip() for line in self.file.read_text().splitlines()]

    def networks(self):
        return self.values(0, 8)

    def stations(self):
        return self.values(9, 6)

    def comes_to(self, expected, what):
        wait_until(lambda: expected(self), what, 20)
        check(True, what)


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


def give_value_for_all(session, hands, field, value):
    """Change All of the first column, from the menu over its header, up to the question."""
    session.display.tool("mousemove", "--window", session.window, 104, 69, "click", 3)
    hands.popup()
    session.see("column_menu")
    session.display.key("Down", "Down", "Down", "Return")
    hands.dialog(f"Get Value for '{field}':")
    hands.types(value)
    session.display.key("Return")
    hands.dialog("Change Values")
    session.see("change_all_question")


def refuse_the_same_keys(session, hands, table):
    """A network and a station are the key of an affiliation, and some stations are in several networks."""
    before = table.file.read_bytes()
    give_value_for_all(session, hands, "net", "YY")
    session.display.key("Return")
    hands.dialog("ovedit")
    session.see("same_keys_refused")
    session.display.key("Return")
    hands.back()
    check(table.file.read_bytes() == before, "Change All changes nothing where records would get the same key")


def change_all(session, hands, database):
    focus_table(session, "arrival")
    table = Table(database, "arrival")
    before = table.values(0, 6)
    check(len(set(before)) > 1, "there are several stations")
    give_value_for_all(session, hands, "sta", "YY")
    session.display.key("Escape")
    hands.back()
    check(table.values(0, 6) == before, "nothing is changed when the question is not answered with yes")
    give_value_for_all(session, hands, "sta", "YY")
    session.display.key("Return")
    table.comes_to(lambda t: set(t.values(0, 6)) == {"YY"}, "Change All puts one value into every row")
    hands.back()
    patiently(hands.open_menu, "r")
    session.see("undo_in_the_menu")
    session.display.key("u")
    table.comes_to(lambda t: t.values(0, 6) == before, "one undo, from the menu, takes all of them back")
    focus_table(session, TABLE)


def mark_rows(session, hands, table):
    before = table.stations()
    session.display.tool("mousemove", "--window", session.window, 90, 86, "click", 1)
    rows_menu(session, hands, "m")
    table.comes_to(lambda t: t.stations()[0] == "-", "a row is marked without a question")
    session.display.key("ctrl+z")
    table.comes_to(lambda t: t.stations() == before, "Ctrl+Z brings its values back")


def run(arguments, display, home):
    session = session_on_a_copy(arguments, display, home)
    hands = Hands(session)
    focus_table(session, TABLE)
    table = Table(arguments.database)
    before = table.networks()
    check(len(before) > 1, "the table has several rows")
    edit_a_cell(session, hands, table)
    undo_and_redo(session, table, before)
    refuse_the_same_keys(session, hands, table)
    change_all(session, hands, arguments.database)
    mark_rows(session, hands, table)
    check(table.networks() == before, "in the end everything is as it was")
    check(session.end() == 0, "ovedit ends well")


if __name__ == "__main__":
    main(run, __doc__)
