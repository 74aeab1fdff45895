"""A tray of the older kind, which takes in a window of each program and knows nothing of menus."""

from .waiting import TimedOut, wait_for


class OlderTray:
    """`start` and `end` let it come late, or again."""

    def __init__(self, desktop):
        self.desktop, self.display = desktop, desktop.display

    def start(self):
        self.process = self.desktop.start("trayer", [
            "trayer", "--edge", "bottom", "--align", "left", "--height", "28",
            "--widthtype", "request"])
        return self

    def end(self):
        self.process.terminate()
        self.process.wait()

    def icon(self):
        """The window of the first program in it, as soon as it is to be seen."""
        def shown():
            panel = self.display.window_of("panel", self.process.pid)
            return panel and self.display.embedded_window(panel)
        return wait_for("an icon in the tray", shown)

    def open_menu(self, process, button=1):
        """Presses a button of the mouse on the icon; the titles in the menu that the program, which
        is made with Qt, has put up then."""
        def opened():
            self.display.click(self.icon(), button)
            try:
                return wait_for("the menu", self.display.pop_ups, 1)
            except TimedOut:  # A window that has the keyboard since just now has it close again.
                return None
        wait_for("the menu", opened)
        return wait_for("its rows", lambda: self._rows(process))

    def _rows(self, process):
        accessibility = self.desktop.accessibility
        return [str(node.name()) for owner in accessibility.owners(process.pid)
                for node in accessibility.qt_menus(owner)
                if node.role() == "menu item" and node.name()]
