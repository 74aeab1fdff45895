"""An XEmbed tray, which embeds a window of each program and has no protocol for menus."""

from .waiting import soon, wait_for


class OlderTray:
    """`start` and `end` let the tray appear late, or again."""

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
        """Waits for the window of the first program in it to be visible."""
        def shown():
            panel = self.display.window_of("panel", self.process.pid)
            return panel and self.display.embedded_window(panel)
        return wait_for("an icon in the tray", shown)

    def open_menu(self, process, button=1):
        """Presses a mouse button on the icon, and returns the titles in the menu that the program (a Qt
        program) then opens."""
        def opened():
            self.display.click(self.icon(), button)
            # A window that just got the focus closes the menu again.
            return soon(self.display.pop_ups, 1)
        wait_for("the menu", opened)
        return wait_for("its rows", lambda: self._rows(process))

    def _rows(self, process):
        accessibility = self.desktop.accessibility
        return [str(node.name()) for owner in accessibility.owners(process.pid)
                for node in accessibility.qt_menus(owner)
                if node.role() == "menu item" and node.name()]
