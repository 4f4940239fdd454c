#!/usr/bin/env python3
"""Derives views in ovedit as its users do, with mouse and keyboard, and checks what is seen."""

import itertools
import pathlib
import re
import time

from hands import Hands
from harness import Session, check, focus_table, main, patiently
from virtual_display import wait_until

FAULT_COLOUR = bytes((0xb0, 0x00, 0x20))  # of the sentence that tells what is wrong

# The first column of the table shown: its header, and its first cell.
FIRST_HEADER = (104, 69)
FIRST_CELL = (90, 86)

# The chooser of fields: places inside it, and the height of a row of its lists.
FIRST_FIELD = (25, 44)
FIRST_CHOSEN = (290, 44)
FIELD_ROW = 17


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


if __name__ == "__main__":
    main(run, __doc__)
