#!/usr/bin/env python3
"""Takes along what ovedit shows as its users do: copies cells for other programs, pastes theirs, and prints."""

import subprocess
import time

from derive_e2e import FIRST_CELL
from edit_e2e import TABLE, Table, rows_menu
from hands import Hands
from harness import check, focus_table, main, session_on_a_copy
from virtual_display import wait_until

WHITE = bytes((255, 255, 255))


class OtherProgram:
    """One that shares the clipboard of the display."""

    def __init__(self, display):
        self.display = display

    def copies(self, text):
        subprocess.run(["xclip", "-selection", "clipboard", "-in"], env=self.display.environment, input=text, text=True,
                       check=True, timeout=20, stdout=subprocess.DEVNULL)

    def pastes(self):
        answer = subprocess.run(["xclip", "-selection", "clipboard", "-out"], env=self.display.environment, text=True,
                                timeout=20, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
        return answer.stdout


def lines(rows):
    return "".join("\t".join(row) + "\n" for row in rows)


def select_block(session, hands, rows):
    """The first two columns of the first rows, with the keyboard."""
    hands.click(session.window, *FIRST_CELL)
    session.display.key("ctrl+Home", "shift+Right", *["shift+Down"] * (rows - 1))


def copy_cells(session, hands, table, other):
    wanted = list(zip(table.networks(), table.stations()))[:3]
    other.copies("nothing yet")
    select_block(session, hands, 3)
    session.see("selected")
    session.display.key("ctrl+c")
    wait_until(lambda: other.pastes() == lines(wanted), "the cells in the clipboard", 20)
    check(True, "another program gets the copied cells, between tabs and line feeds")
    session.display.key("ctrl+shift+c")
    wait_until(lambda: other.pastes() == lines([("net", "sta")] + wanted), "the names in the clipboard", 20)
    check(True, "and the names of the columns before them where that is asked for")
    other.copies("between")
    hands.click(session.window, *FIRST_CELL)
    session.display.key("ctrl+c")
    wait_until(lambda: other.pastes() == wanted[0][0], "the one cell in the clipboard", 20)
    check(True, "one cell is copied without an end of line")


def paste_cells(session, hands, table, other):
    display = session.display
    before = table.file.read_bytes()
    networks, stations = table.networks(), table.stations()
    other.copies(lines([("AA", "ONE"), ("BB", "TWO")]))
    hands.click(session.window, *FIRST_CELL)
    display.key("ctrl+v")
    time.sleep(1)
    check(table.file.read_bytes() == before, "nothing is pasted while editing is off")
    rows_menu(session, hands, "e")
    hands.click(session.window, *FIRST_CELL)
    display.key("ctrl+v")
    table.comes_to(lambda t: t.networks()[:2] == ["AA", "BB"] and t.stations()[:2] == ["ONE", "TWO"],
                   "what another program copied is pasted from the selected cell on")
    check(table.networks()[2:] == networks[2:] and table.stations()[2:] == stations[2:], "the other rows are as they were")
    session.see("pasted")
    display.key("ctrl+z")
    table.comes_to(lambda t: t.networks() == networks and t.stations() == stations, "one undo takes all of it back")


def refuse(session, hands, table, other):
    before = table.file.read_bytes()
    other.copies(lines([("AA", "ONE"), ("BB", "TOOLONGFORIT")]))
    hands.click(session.window, *FIRST_CELL)
    session.display.key("ctrl+v")
    hands.dialog("ovedit")
    session.see("refused")
    check(table.file.read_bytes() == before, "where one value does not fit none is pasted, and a box says why")
    session.display.key("Return")
    hands.back()


def print_preview(session, hands):
    display = session.display
    display.key("ctrl+p")
    preview = hands.dialog(f"Print quakes.{TABLE}", 60)
    display.tool("windowmove", "--sync", preview, 40, 30)
    picture = session.see("print_preview")
    x, y, width, height = display.place(preview)
    page = picture.part(x + width // 2 - 100, y + height // 2 - 100, 200, 200)
    pixels = [page[i:i + 3] for i in range(0, len(page), 3)]
    check(pixels.count(WHITE) > len(pixels) // 4, "the preview shows a white page")
    check(len(set(pixels)) > 3, "with something printed on it")
    display.key("Escape")
    hands.back()


def run(arguments, display, home):
    session = session_on_a_copy(arguments, display, home)
    hands = Hands(session)
    other = OtherProgram(display)
    focus_table(session, TABLE)
    table = Table(arguments.database)
    check(len(table.networks()) > 3, "the table has several rows")
    copy_cells(session, hands, table, other)
    paste_cells(session, hands, table, other)
    refuse(session, hands, table, other)
    print_preview(session, hands)
    check(session.end() == 0, "ovedit ends well")


if __name__ == "__main__":
    main(run, __doc__)
