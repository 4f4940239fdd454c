#!/usr/bin/env python3
"""Changes records in ovedit as its users do, with mouse and keyboard, and checks what is in the files then."""

import time

from derive_e2e import FIRST_CELL
from hands import Hands
from harness import WINDOW, check, focus_table, main, patiently, session_on_a_copy
from virtual_display import wait_until

STATION = slice(0, 6)
TIME = slice(7, 24)
ROW_HEADER = (20, 86)


class Table:
    """A table's file, read without the program."""

    def __init__(self, path):
        self.path = path

    def records(self):
        return self.path.read_text().splitlines()

    def bytes(self):
        return self.path.read_bytes()

    def station(self, number):
        return self.records()[number][STATION].strip()

    def wait_for_station(self, number, station):
        wait_until(lambda: self.station(number) == station, f"station {station} in record {number}", 10)


def choose(hands, letter):
    """An entry of the Rows menu."""
    windows = hands.session.popups()
    patiently(hands.open_menu, "r")
    hands.display.key(letter)
    wait_until(lambda: hands.session.popups() <= windows or hands.active() != hands.session.window, "the menu to close", 10)


def agree(hands, seconds=5):
    """Says yes to the question, where one is asked."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if hands.active() not in ("", hands.session.window):
            hands.session.see("question")
            hands.display.key("alt+y")
            break
        time.sleep(0.1)
    hands.back()


def editor_is_open(hands, before):
    return hands.table_seen() != before


def edit_cells(hands, table):
    session, display = hands.session, hands.display
    before = table.bytes()
    hands.click(session.window, *FIRST_CELL, times=2)
    hands.types("ZZZ")
    display.key("Return")
    time.sleep(1)
    check(table.bytes() == before, "cells are not changed until that is allowed")

    choose(hands, "e")
    hands.click(session.window, *FIRST_CELL, times=2)
    time.sleep(0.3)
    display.key("ctrl+a")
    hands.types("ZZZ")
    display.key("Return")
    table.wait_for_station(0, "ZZZ")
    check(True, "a cell is edited after a double click")
    check(table.bytes()[len(before) // len(table.records()):] == before[len(before) // len(table.records()):],
          "the other records are as they were")

    hands.click(session.window, *FIRST_CELL)
    hands.types("YYY")
    session.see("typing")
    display.key("Return")
    table.wait_for_station(0, "YYY")
    check(True, "a cell is edited by typing")

    before = table.bytes()
    hands.click(session.window, *FIRST_CELL)
    hands.types("XXX")
    display.key("Escape")
    time.sleep(0.5)
    check(table.bytes() == before, "Escape gives an edit up")


def refuse(hands, table):
    session, display = hands.session, hands.display
    before = table.bytes()
    hands.click(session.window, *FIRST_CELL)
    hands.types("TOOLONGXX")
    typed = hands.table_seen()
    display.key("Return")
    wait_until(lambda: display.picture().part(*session.inside()) != typed, "the reason beside the cell", 10)
    session.see("refused")
    check(table.bytes() == before, "a value that is too long is not stored")
    display.key(*["BackSpace"] * 6)
    display.key("Return")
    table.wait_for_station(0, "TOO")
    check(True, "the editor of a refused value goes on with what was typed")


def edit_a_time(hands, table):
    display = hands.display
    hands.click(hands.session.window, *FIRST_CELL)
    display.key("Right", "F2")
    time.sleep(0.3)
    hands.session.see("time_editor")
    before = table.records()[0]
    display.key("End")
    hands.types(" ")
    display.key("Return")
    wait_until(lambda: table.records()[0] != before, "the record to be stored", 10)
    check(table.records()[0][TIME] == before[TIME], "a time is stored as it is shown, with all its digits")


def use_the_row_viewer(hands, table):
    session, display = hands.session, hands.display
    count = len(table.records())
    display.key("ctrl+shift+n")
    viewer = hands.dialog("ovedit Row Viewer")
    hands.types("NEW")
    display.key("Tab")
    hands.types("2020-01-02T03:04:05.678")
    display.key("Tab")
    session.see("scratch_record")
    _, _, _, height = display.place(viewer)
    hands.click(viewer, 35, height - 22)  # Add
    wait_until(lambda: len(table.records()) == count + 1, "the record to be added", 10)
    check(table.station(count) == "NEW" and table.records()[count][TIME].strip() == "1577934245.67800",
          "a record is put together and added")

    display.tool("windowactivate", "--sync", viewer)
    hands.click(viewer, 120, 16)  # the row's number
    display.key("ctrl+a")
    hands.types("1")
    display.key("Return", "Tab", "Tab", "Tab")
    display.key("ctrl+a")
    hands.types("FORM")
    session.see("row_viewer")
    display.key("Return")
    table.wait_for_station(1, "FORM")
    check(True, "a field is edited in the row viewer")
    _, _, width, height = display.place(viewer)
    hands.click(viewer, width - 45, height - 22)  # Dismiss
    wait_until(lambda: session.popups() == 1, "the row viewer to close", 10)
    display.tool("windowactivate", "--sync", session.window)
    hands.back()


def mark_and_crunch(hands, table):
    session = hands.session
    count = len(table.records())
    second = table.records()[1]
    patiently(hands.click, session.window, *ROW_HEADER)
    time.sleep(0.3)
    choose(hands, "m")
    agree(hands)
    wait_until(lambda: table.station(0) == "-", "the record to be marked", 10)
    check(len(table.records()) == count, "a marked record stays until the table is crunched")
    choose(hands, "c")
    agree(hands)
    wait_until(lambda: len(table.records()) == count - 1, "the table to be crunched", 10)
    check(table.records()[0] == second, "crunching removes the marked record")


def follow_others(hands, table):
    """Another process, this one, changes the table while it is looked at."""
    session, display = hands.session, hands.display
    first_cell = (WINDOW[0] + 60, WINDOW[1] + 100, 80, 16)

    def cell_seen():
        return display.picture().part(*first_cell)

    display.settled_picture()
    before = cell_seen()
    records = table.records()
    with open(table.path, "r+") as file:
        file.write("OTHER ")
    wait_until(lambda: cell_seen() != before, "the change to be seen", 10)
    session.see("changed_by_another")
    check(True, "what another program changes is seen at once")

    hands.click(session.window, *FIRST_CELL)
    hands.types("MINE")
    typed = hands.table_seen()
    with open(table.path, "r+") as file:
        file.write("THEIRS")
    wait_until(lambda: display.picture().part(*session.inside()) != typed, "the stored value to be told", 10)
    session.see("told_while_typing")
    check(table.station(0) == "THEIRS", "what is typed waits")
    replacement = table.path.with_name("replacement")
    replacement.write_text("\n".join(records[2:3] + table.records()[:2] + records[3:]) + "\n")
    replacement.rename(table.path)
    time.sleep(2)
    session.see("replaced")
    display.key("Return")
    table.wait_for_station(1, "MINE")
    check(table.station(0) == records[2][STATION].strip(), "the editor goes with its record into another file")


def run(arguments, display, home):
    session = session_on_a_copy(arguments, display, home)
    hands = Hands(session)
    focus_table(session, "arrival")
    table = Table(arguments.database.with_name("quakes.arrival"))
    edit_cells(hands, table)
    refuse(hands, table)
    edit_a_time(hands, table)
    use_the_row_viewer(hands, table)
    mark_and_crunch(hands, table)
    follow_others(hands, table)
    check(session.end() == 0, "ovedit ends well")


if __name__ == "__main__":
    main(run, __doc__)
