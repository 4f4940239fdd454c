#!/usr/bin/env python3
"""Starts ovedit on a database, looks at every table with mouse and keyboard, and checks what is seen."""

import time

from harness import Session, check, focus_table, main, patiently, tables_of
from virtual_display import wait_until


def turn_tabs_by_key(session):
    wanted = tables_of(session.database)
    seen = {}
    for _ in wanted:
        before = session.table()
        picture = session.see("table_" + before)
        check(len(picture.colours(*session.inside())) > 3, f"something is drawn for {before}")
        seen[before] = picture.part(*session.inside())
        session.display.key("ctrl+Next")
        wait_until(lambda: session.table() != before, "the next tab")
    check(set(seen) == wanted, f"a tab for each of the tables {', '.join(sorted(wanted))}")
    check(len(set(seen.values())) == len(wanted), "every table looks different")


def tab_row(session):
    """The height at which a click turns tabs."""
    x, y, _, _ = session.display.place(session.window)
    for dy in range(30, 70, 4):
        before = session.table()
        for dx in (60, 300):
            session.display.click(x + dx, y + dy)
            end = time.monotonic() + 1.5
            while time.monotonic() < end:
                if session.table() != before:
                    return y + dy
                time.sleep(0.05)
    raise AssertionError("no click turned a tab")


def click_tabs(session):
    row = tab_row(session)
    x, _, width, _ = session.display.place(session.window)
    seen = []
    for place in range(x + 30, x + width - 60, 25):
        session.display.click(place, row)
        time.sleep(0.15)
        if session.table() not in seen:
            seen.append(session.table())
    check(len(seen) >= min(5, len(tables_of(session.database))), f"clicks turn the tabs {', '.join(seen)}")
    return row


def hover(session, x, y, what):
    """Rests the mouse on a place and checks that a tooltip comes up there, with text in it."""
    display = session.display
    display.move(display.size[0] - 5, display.size[1] - 5)
    wait_until(lambda: session.popups() == 1, "no popup to be open")
    before = display.settled_picture()
    display.move(x - 2, y)
    time.sleep(0.1)
    display.move(x, y)
    wait_until(lambda: session.popups() > 1, f"the tooltip of {what}", 10)
    picture = session.see("tooltip_" + what.replace(" ", "_"))
    tip = next(window for window in display.windows("--class", "ovedit") if window != session.window)
    place = display.place(tip)
    check(place[2] > 150 and place[3] > 40, f"the tooltip of {what} is large enough to hold a text")
    check(picture.part(*place) != before.part(*place), f"the tooltip of {what} is seen")
    check(len(picture.colours(*place)) > 2, f"the tooltip of {what} has something written in it")


def hover_for_tooltips(session, tabs):
    x, y, _, _ = session.display.place(session.window)
    patiently(hover, session, x + 60, tabs, "a tab")
    header = tabs + 26
    patiently(hover, session, x + 150, header, "a column")
    patiently(hover, session, x + 25, header + 60, "a row")
    session.display.move(session.display.size[0] - 5, session.display.size[1] - 5)
    wait_until(lambda: session.popups() == 1, "the tooltip to go")


def close_menus(session):
    session.display.key("Escape")
    wait_until(lambda: session.popups() == 1, "the menu to close", 10)
    session.display.key("Escape")


def open_menu(session, letter, name):
    close_menus(session)
    session.display.key("alt+" + letter)
    wait_until(lambda: session.popups() > 1, f"the {name} menu", 10)


def open_menus(session):
    for letter, name in (("f", "file"), ("v", "view"), ("w", "window"), ("h", "help")):
        patiently(open_menu, session, letter, name)
        session.see("menu_" + name)
        patiently(close_menus, session)
        print("ok    the menu", name, flush=True)


def change_a_switch(session):
    focus_table(session, "origin")
    readable = session.see("times_readable").part(*session.inside())
    patiently(open_menu, session, "v", "view")
    session.display.key("r")
    wait_until(lambda: session.popups() == 1, "the menu to close", 30)
    seconds = session.see("times_in_seconds").part(*session.inside())
    check(seconds != readable, "the switch Readable Times changes the table")
    return seconds


def open_documentation(session):
    session.display.key("F1")
    return wait_until(lambda: session.display.windows("--name", "^Schema css3.0$"), "the schema documentation", 10)[0]


def read_documentation(session):
    schema = patiently(open_documentation, session)
    picture = session.see("schema")
    check(len(picture.colours(*session.display.place(schema))) > 5, "the schema documentation shows something")
    session.display.tool("windowactivate", "--sync", schema)
    session.display.key("Escape")
    wait_until(lambda: not session.display.windows("--name", "^Schema css3.0$"), "the documentation to close")


def run(arguments, display, home):
    session = Session(display, arguments, home)
    session.start()
    check(session.table() in tables_of(session.database), "the window is named after its database and table")
    turn_tabs_by_key(session)
    tabs = click_tabs(session)
    focus_table(session, "origin")
    hover_for_tooltips(session, tabs)
    open_menus(session)
    read_documentation(session)
    seconds = change_a_switch(session)
    check(session.end() == 0, "ovedit ends well")
    check("show_readable_times=false" in session.settings.read_text(), "the switch is kept")

    session.start()
    focus_table(session, "origin")
    again = session.see("after_restart").part(*session.inside())
    check(again == seconds, "the switch still holds after a restart")
    check(session.end() == 0, "ovedit ends well again")


if __name__ == "__main__":
    main(run, __doc__)
