#!/usr/bin/env python3
"""Derives views in ovedit as its users do, with mouse and keyboard, and checks what is seen."""

import argparse
import itertools
import os
import pathlib
import re
import sys
import tempfile
import time

from ovedit_e2e import Session, check, focus_table, patiently
from virtual_display import Display, missing_programs, wait_until

FAULT_COLOUR = bytes((0xb0, 0x00, 0x20))  # of the sentence that tells what is wrong

# The middle of each entry of the Derive menu, as a part of the menu's height.
DERIVE_ENTRIES = {
    "subset": 0.045, "sort": 0.134, "group": 0.222, "ungroup": 0.311, "join": 0.406, "outer join": 0.494,
    "left join": 0.583, "no join": 0.671, "theta join": 0.766, "sever": 0.861, "separate": 0.95}
DERIVE_ROW = 0.0885  # the height of an entry
DERIVE_KEYS = {
    "subset": "s", "sort": "o", "group": "g", "ungroup": "u", "join": "j", "outer join": "t", "left join": "l",
    "no join": "n", "theta join": "h", "sever": "v", "separate": "p"}
DERIVE_PLACE = (152, 10)  # of the word Derive in the menu bar

# The first column of the table shown: its header, and its first cell.
FIRST_HEADER = (104, 69)
FIRST_CELL = (90, 86)

# The chooser of fields: places inside it, and the height of a row of its lists.
FIRST_FIELD = (25, 44)
FIRST_CHOSEN = (290, 44)
FIELD_ROW = 17


class Hands:
    """What the user does with dialogs, menus and tables of a session."""

    def __init__(self, session):
        self.session = session
        self.display = session.display

    # ---- Windows

    def active(self):
        return self.display.tool("getactivewindow")

    def dialog(self, title, seconds=20):
        """The dialog with this title, once it has the keyboard."""

        def in_front():
            window = self.active()
            if window and window != self.session.window and self.display.title(window) == title:
                return window
            return None

        self.session.alive()
        return wait_until(in_front, f"the dialog {title!r}", seconds)

    def back(self):
        """Waits until the window has the keyboard again."""
        wait_until(lambda: self.active() == self.session.window, "the window to have the keyboard")

    def popup(self):
        """The popup that is open, the newest one."""
        self.session.alive()
        known = (self.session.window, self.active())
        return wait_until(
            lambda: next((window for window in reversed(self.display.windows("--class", "ovedit"))
                          if window not in known), None), "a popup", 10)

    def click(self, window, x, y, button=1, times=1):
        """Clicks at a place inside a window."""
        self.display.tool("mousemove", "--window", window, x, y, "click", "--repeat", times, "--delay", 60, button)

    def types(self, text):
        self.display.tool("type", "--delay", "12", text)

    # ---- Menus

    def open_menu(self, letter):
        self.display.key("Escape", "Escape")
        self.display.key("alt+" + letter)
        wait_until(lambda: self.session.popups() > 1, f"the menu {letter}", 10)

    def by_key(self, command, entry=None):
        """Chooses a command, and an entry of its list by its number, with the keyboard."""
        patiently(self.open_menu, "d")
        self.display.key(DERIVE_KEYS[command])
        if entry is not None:
            wait_until(lambda: self.session.popups() > 2, f"the list of {command}", 10)
            self.display.key(*(["Down"] * entry), "Return")

    def by_mouse(self, command, entry=None):
        """The same with the mouse."""
        patiently(self.try_by_mouse, command, entry)

    def try_by_mouse(self, command, entry):
        self.display.key("Escape", "Escape")
        wait_until(lambda: self.session.popups() == 1, "menus to close", 10)
        self.click(self.session.window, *DERIVE_PLACE)
        menu = self.popup()
        _, _, width, height = self.display.place(menu)
        self.click(menu, width // 3, round(height * DERIVE_ENTRIES[command]))
        if entry is not None:
            known = {self.session.window, menu}
            listed = wait_until(lambda: set(self.display.windows("--class", "ovedit")) - known, f"the list of {command}", 10)
            self.click(listed.pop(), 40, round(height * DERIVE_ROW * (entry + 0.5)))
        wait_until(lambda: menu not in self.display.windows("--class", "ovedit"), "the menu to close", 10)

    # ---- Dialogs

    def name_view(self, name, shown=None):
        self.dialog("Get View Name")
        self.types(name)
        self.display.key("Return")
        wait_until(lambda: re.fullmatch(shown or name, self.session.table()), f"the view {name}")
        self.back()

    def give_expression(self, text):
        self.dialog("ovedit")
        self.types(text)
        self.display.key("Return")

    def drag(self, window, start, end):
        self.display.tool("mousemove", "--window", window, *start, "mousedown", 1)
        for step in range(1, 9):
            self.display.tool("mousemove", "--window", window, *(a + (b - a) * step // 8 for a, b in zip(start, end)))
            time.sleep(0.05)
        self.display.tool("mouseup", 1)
        time.sleep(0.2)

    def table_seen(self, name=None):
        if name:
            return self.session.see(name).part(*self.session.inside())
        return self.display.settled_picture().part(*self.session.inside())


# ---- What is tried


def choose_first_field(hands, title):
    dialog = hands.dialog(title)
    hands.display.key("Return")  # among the offered fields: chooses the current one
    press_ok(hands, dialog)


def press_ok(hands, dialog):
    _, _, width, height = hands.display.place(dialog)
    hands.click(dialog, width - 138, height - 23)


def focus_view(hands, name):
    for _ in range(30):
        before = hands.session.table()
        if before == name:
            return
        hands.display.key("ctrl+Next")
        wait_until(lambda: hands.session.table() != before, "the next tab")
    raise AssertionError(f"there is no view {name}")


def derive_by_keyboard(hands):
    """Every command, from the menu, each view under a name of its own."""
    session = hands.session
    focus_table(session, "arrival")
    all_rows = hands.table_seen()
    hands.by_key("subset")
    hands.give_expression("arid <= 50 && arid > 10")
    hands.name_view("few")
    few = hands.table_seen("few")
    check(few != all_rows, "a subset by keyboard")
    hands.by_key("sort")
    choose_first_field(hands, "Sort fields")
    hands.name_view("sorted")
    check(hands.table_seen() != few, "a sort by keyboard")
    hands.by_key("group")
    choose_first_field(hands, "Group fields")
    hands.name_view("groups")
    hands.by_key("ungroup")
    hands.name_view("rows")
    check(True, "a group and an ungroup by keyboard")
    for command, entry in (("join", 1), ("outer join", 3), ("left join", 1), ("no join", 2)):
        focus_view(hands, "few")
        hands.by_key(command, entry)
        hands.name_view(command.replace(" ", "_"))
        check(True, f"a {command} by keyboard")
    focus_view(hands, "few")
    hands.by_key("theta join", 0)
    hands.give_expression("few.sta == affiliation.sta")
    hands.name_view("theta")
    check(True, "a theta join by keyboard")
    focus_view(hands, "join")
    hands.by_key("sever", 0)
    hands.name_view("severed")
    focus_view(hands, "join")
    hands.by_key("separate", 1)
    hands.name_view("separated", ".*separate.*")  # the database has its own names for these
    check(True, "sever and separate by keyboard")


def fail(hands):
    """What can't be done is told, and leaves the window as it was."""
    session, display = hands.session, hands.display
    focus_view(hands, "few")
    before = hands.table_seen()
    for expression, name, picture in (("arid > 20", "sorted", "name_is_taken"), ("arid > stx", "new", "wrong_expression"),
                                      ("arid > 1000", "new", "no_records")):
        hands.by_key("subset")
        hands.give_expression(expression)
        hands.dialog("Get View Name")
        hands.types(name)
        display.key("Return")
        wait_until(lambda: display.title(hands.active()) == "ovedit", "the error box")
        session.see("box_" + picture)
        display.key("Return")
        hands.back()
        check(session.table() == "few" and hands.table_seen() == before, f"{picture}: a box, and the window as it was")


def write_expression(hands):
    """Names taken over by key, what is wrong, and the history."""
    display = hands.display
    focus_view(hands, "few")
    hands.by_key("subset")
    dialog = hands.dialog("ovedit")
    place = display.place(dialog)
    hands.types("ar")
    wait_until(lambda: hands.session.popups() > 2, "the proposed names", 10)
    hands.session.see("proposals")
    display.key("Tab")
    wait_until(lambda: hands.session.popups() == 2, "the proposals to go", 10)
    hands.types(" < > 20")
    wait_until(lambda: FAULT_COLOUR in display.picture().colours(*display.place(dialog)), "what is wrong")
    hands.session.see("fault")
    check(display.place(dialog)[3] > place[3], "the dialog tells what is wrong")
    display.key(*["BackSpace"] * 5)
    hands.types(" 20")
    wait_until(lambda: FAULT_COLOUR not in display.picture().colours(*display.place(dialog)), "nothing to be wrong")
    display.key("Return")
    hands.name_view("completed")  # arid < 20: the name was put in
    completed = hands.table_seen()
    focus_view(hands, "few")
    hands.by_key("subset")
    hands.dialog("ovedit")
    display.key("Up")
    hands.session.see("history")
    display.key("Return")
    hands.name_view("again")
    check(hands.table_seen() == completed, "the history brings the expression back")


def sort_by_dragging(hands, attempts=itertools.count(1)):
    """The same keys chosen by double click and by dragging into and within the list."""
    session, display = hands.session, hands.display
    attempt = next(attempts)
    focus_table_page(hands, "arrival")
    hands.by_key("sort")
    dialog = hands.dialog("Sort fields")
    for row in (0, 1):  # station, time
        hands.click(dialog, FIRST_FIELD[0], FIRST_FIELD[1] + row * FIELD_ROW, times=2)
        time.sleep(0.2)
    session.see("sort_chosen")
    press_ok(hands, dialog)
    hands.name_view(f"clicked{attempt}")
    clicked = hands.table_seen()

    focus_table_page(hands, "arrival")
    check(hands.table_seen() != clicked, "sorting by station and time changes the order")
    hands.by_key("sort")
    dialog = hands.dialog("Sort fields")
    field, chosen = FIRST_FIELD, FIRST_CHOSEN
    hands.drag(dialog, (field[0], field[1] + FIELD_ROW), (chosen[0], chosen[1] + 60))  # time
    hands.drag(dialog, field, (chosen[0], chosen[1] + 100))  # station
    session.see("sort_dragged")
    hands.drag(dialog, (chosen[0], chosen[1] + FIELD_ROW), (chosen[0], chosen[1] - 6))  # station before time
    session.see("sort_reordered")
    press_ok(hands, dialog)
    hands.name_view(f"dragged{attempt}")
    check(hands.table_seen() == clicked, "dragging into and within the list gives the same order")


def focus_table_page(hands, table):
    if hands.session.table() != table:
        hands.display.key("alt+1")
        focus_table(hands.session, table)


def use_the_table(hands):
    """The menu of a cell, and clicks on a header."""
    session, display = hands.session, hands.display
    focus_table_page(hands, "arrival")
    plain = hands.table_seen()

    def choose_in_cell_menu(entry):
        hands.click(session.window, *FIRST_CELL, button=3)
        hands.popup()
        display.key(*["Down"] * (entry + 1), "Return")

    patiently(choose_in_cell_menu, 1)
    found = hands.table_seen("found")
    check(found != plain, "Find Forward goes to the next of its kind")
    patiently(choose_in_cell_menu, 2)
    hands.name_view("of_one_station")
    check(hands.table_seen() != found, "Subset of a cell")

    focus_table_page(hands, "arrival")
    before = hands.table_seen()
    hands.click(session.window, *FIRST_HEADER)
    wait_until(lambda: display.picture().part(*session.inside()) != before, "the table to be sorted")
    upwards = hands.table_seen("sorted_by_header")
    hands.click(session.window, *FIRST_HEADER)
    wait_until(lambda: display.picture().part(*session.inside()) != upwards, "the table to be sorted the other way")
    check(session.table() == "arrival", "clicks on a header sort the table in its place")


def derive_by_mouse(hands):
    """The same commands with the mouse; the database finds the names."""
    session, display = hands.session, hands.display
    patiently(hands.open_menu, "v")
    display.key("a")  # don't ask for names
    hands.back()

    def new_view(text):
        wait_until(lambda: re.search(text, session.table()), f"a view {text}")
        hands.back()

    focus_table_page(hands, "arrival")
    hands.by_mouse("subset")
    hands.give_expression("arid <= 30")
    new_view("subset")
    few = session.table()
    hands.by_mouse("sort")
    choose_first_field(hands, "Sort fields")
    new_view("sort")
    hands.by_mouse("group")
    choose_first_field(hands, "Group fields")
    new_view("group")
    hands.by_mouse("ungroup")
    new_view("ungroup")
    joined = None
    for command, entry in (("join", 3), ("outer join", 0), ("left join", 1), ("no join", 2)):
        focus_view(hands, few)
        hands.by_mouse(command, entry)
        wait_until(lambda: session.table() != few, f"a {command}")
        hands.back()
        joined = joined or session.table()
    focus_view(hands, joined)
    hands.by_mouse("sever", 0)
    new_view("sever")
    focus_view(hands, joined)
    hands.by_mouse("separate", 1)
    new_view("separate")
    check(True, "every command by mouse")
    before = session.table()
    display.key("ctrl+F4")
    wait_until(lambda: session.table() != before, "the view to be closed")
    check(True, "a view is closed")


def cancel(hands):
    """A theta join that takes minutes: shown, painted, cancelled."""
    session, display = hands.session, hands.display
    focus_table(session, "arrival")
    for way in ("key", "mouse"):
        hands.by_key("theta join", 1)
        hands.give_expression("sin(arrival.time * lat) * cos(lon + arid) == 7")
        hands.dialog("Get View Name")
        display.key("Escape")
        dialog = hands.dialog("Working")
        time.sleep(2.5)
        display.picture(str(session.pictures / f"progress_{way}.png"))
        check(len(display.picture().colours(*session.inside())) > 3, "the window is painted while it works")
        _, _, width, height = display.place(dialog)
        if way == "key":
            display.key("Escape")
        else:
            hands.click(dialog, width - 55, height - 28)
        begin = time.monotonic()
        wait_until(lambda: not display.windows("--name", "^Working$"), "the operation to end", 10)
        check(time.monotonic() - begin < 2, f"cancelled by {way}")  # a tenth of a second, without all the tools here
        hands.back()
        session.see("cancelled_by_" + way)
        check(session.table() == "arrival" and session.popups() == 1, "no box, and the window as it was")


# Forty times the arrivals and origins of the demo: a hundred thousand rows each.
def make_large(database, folder):
    for table in ("arrival", "origin"):
        rows = (database.parent / f"{database.name}.{table}").read_bytes()
        (pathlib.Path(folder) / f"quakes.{table}").write_bytes(rows * 40)
    return pathlib.Path(folder) / "quakes"


def run(arguments, display, home):
    session = Session(display, arguments, home)
    session.start()
    hands = Hands(session)
    derive_by_keyboard(hands)
    fail(hands)
    write_expression(hands)
    patiently(sort_by_dragging, hands)
    use_the_table(hands)
    derive_by_mouse(hands)
    check(session.end() == 0, "ovedit ends well")
    check("expression_history" in session.settings.read_text(), "the history is kept")

    session.settings.unlink()
    arguments.database = make_large(arguments.database, home)
    session = Session(display, arguments, home)
    session.start()
    cancel(Hands(session))
    check(session.end() == 0, "ovedit ends well again")


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
    with Display() as display, tempfile.TemporaryDirectory() as home:
        try:
            run(arguments, display, home)
        except AssertionError as error:
            display.picture(str(arguments.pictures / "failure.png"))
            sys.exit(f"FAILED {error}; pictures are in {arguments.pictures}")


if __name__ == "__main__":
    main()
