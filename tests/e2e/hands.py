"""What a user does with dialogs, menus and tables."""

import re
import time

from harness import patiently
from virtual_display import wait_until

# The middle of each entry of the Derive menu, as a part of the menu's height.
DERIVE_ENTRIES = {
    "subset": 0.045, "sort": 0.134, "group": 0.222, "ungroup": 0.311, "join": 0.406, "outer join": 0.494,
    "left join": 0.583, "no join": 0.671, "theta join": 0.766, "sever": 0.861, "separate": 0.95}
DERIVE_ROW = 0.0885  # the height of an entry
DERIVE_KEYS = {
    "subset": "s", "sort": "o", "group": "g", "ungroup": "u", "join": "j", "outer join": "t", "left join": "l",
    "no join": "n", "theta join": "h", "sever": "v", "separate": "p"}
DERIVE_PLACE = (152, 10)  # of the word Derive in the menu bar


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

        return wait_until(in_front, f"the dialog {title!r}", seconds)

    def back(self):
        """Waits until the window has the keyboard again."""
        wait_until(lambda: self.active() == self.session.window, "the window to have the keyboard")

    def popup(self):
        """The popup that is open, the newest one."""
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
