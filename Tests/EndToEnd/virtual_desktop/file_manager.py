"""Operates a real file manager as a user does: selects everything in a folder, opens the menu of the
selection, and chooses an entry."""

import itertools

from . import waiting
from .processes import end_process
from .waiting import soon, wait_for

COMMANDS = {"caja": ["caja", "--no-desktop"], "dolphin": ["dolphin", "--new-window"],
            "nautilus": ["nautilus", "--new-window"], "nemo": ["nemo"], "pcmanfm-qt": ["pcmanfm-qt"],
            "thunar": ["thunar"]}
OF_QT = ("dolphin", "pcmanfm-qt")
MENU_ROLES = ("menu", "menu item")


class FileManager:
    def __init__(self, desktop, name, folder):
        self.desktop, self.name = desktop, name
        self._choose_icons()
        # PCManFM-Qt usually does not appear on the accessibility bus, neither at once nor later, until it
        # is restarted.
        wait_for(f"{name} to be accessible", lambda: self._start(folder), 6 * waiting.DEADLINE)
        self._activate()

    def open_menu(self):
        """Opens the menu for everything in the folder."""
        display = self.desktop.display
        self._point_at_files()

        def opened():
            display.press_keys("Control_L", "a")
            display.press_keys("Menu")
            if not (entry := soon(lambda: self._entry("Cut"), waiting.DEADLINE / 3)):
                # The folder was still loading, so the menu is that of the folder.
                display.press_keys("Escape")
            return entry
        wait_for(f"the menu of {self.name}", opened, 3 * waiting.DEADLINE)

    def entry(self, *titles):
        """Opens the menus that lead to the last of these entries, and returns it."""
        for title in titles[:-1]:
            wait_for(f'an entry "{title}"', lambda: self._entry(title)).do("click")
        return wait_for(f'an entry "{titles[-1]}"', lambda: self._entry(titles[-1]))

    def close_menu(self):
        while self._entry("Cut"):
            self.desktop.display.press_keys("Escape")

    def choose(self, *titles):
        """Opens the menu for everything in the folder, and chooses the last of these entries."""
        self._activate()
        self.open_menu()
        self.entry(*titles).do("Press" if self.name in OF_QT else "click")

    def select_all(self):
        self._activate()
        self.desktop.display.press_keys("Control_L", "a")

    def _activate(self):
        self.desktop.display.activate(self.window)

    def _point_at_files(self):
        self.desktop.display.move_pointer_into(self.window)

    def _start(self, folder):
        self.process = self.desktop.start(self.name, [*COMMANDS[self.name], folder])

        # An instance that passes its folder to another one that is about to exit shows no window.
        def appeared():
            return self._window(folder.name) or self.process.poll() is not None
        soon(appeared, 2 * waiting.DEADLINE)
        self.window = self._window(folder.name)
        if self.window and (owners := soon(self._owners, waiting.DEADLINE / 5)):
            return owners
        end_process(self.process)
        return None

    def _window(self, title):
        windows = self.desktop.display.windows().items()
        return next((window for window, its_title in windows if title in its_title), None)

    def _entry(self, title):
        return next((node for node in self._menu_nodes()
                     if node.role() in MENU_ROLES and node.name() == title), None)

    def _menu_nodes(self):
        """All nodes in the open menus."""
        accessibility = self.desktop.accessibility
        if self.name in OF_QT:
            return itertools.chain.from_iterable(map(accessibility.qt_menus, self._owners()))
        windows = accessibility.windows()
        return (node for window in windows if window.node.role() == "window"
                for node in window.node.walk())

    def _owners(self):
        return self.desktop.accessibility.owners(self.process.pid)

    def _choose_icons(self):
        """Sets PCManFM-Qt's icon theme, which it does not find outside LXQt."""
        settings = self.desktop.home / ".config/pcmanfm-qt/default/settings.conf"
        settings.parent.mkdir(parents=True, exist_ok=True)
        settings.write_text("[System]\nFallbackIconThemeName=Adwaita\n")
