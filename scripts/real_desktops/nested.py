"""A Wayland compositor that runs in a window of another display, and fills it."""

from Xlib import protocol

from virtual_desktop import wait_for
from virtual_desktop.display import Display
from virtual_desktop.file_manager import OF_QT, FileManager

from .screen import changed_areas


class NestedDisplay(Display):
    """X11 programs are on the inner display, which knows their windows. Keys and mouse events are sent to
    the outer display, where pictures are taken, too."""

    def __init__(self, name, outer):
        # The library shares one table of event numbers among all displays, and fails if two displays have
        # different numbers.
        protocol.display.Display.event_classes = protocol.event.event_class.copy()
        super().__init__(name)
        self.outer = outer

    def close(self):
        super().close()
        self.outer.close()

    def press_keys(self, *names):
        self.outer.press_keys(*names)

    def click_at(self, x, y, button=1):
        self.outer.click_at(x, y, button)

    def move_pointer(self, x, y):
        self.outer.move_pointer(x, y)

    def pixels(self, area=None):
        return self.outer.pixels(area)


class WaylandFileManager(FileManager):
    """A file manager whose windows only the compositor knows. It is located by the change that it makes on
    the screen; its menus are part of its window, or Qt menus."""

    def __init__(self, desktop, name, folder):
        self.without = desktop.still_picture()
        super().__init__(desktop, name, folder)

    def _activate(self):
        """Activates the window by a click to the right of the files."""
        def seen():
            return next((area for area in changed_areas(
                self.desktop.still_picture(1).changes(self.without)) if area[3] > 200), None)
        left, top, width, height = wait_for(f"{self.name} on the screen", seen)
        self.desktop.display.click_at(left + width * 4 // 5, top + height // 2)

    def _point_at_files(self):
        pass

    def _window(self, title):
        return next((window for window in self.desktop.accessibility.windows()
                     if title in window.name), None)

    def _menu_nodes(self):
        return super()._menu_nodes() if self.name in OF_QT else all_below(self.window.node)


def all_below(node):
    """All nodes below one: GTK 4 does not report which nodes in a window are on the screen."""
    yield node
    for child in node.children():
        yield from all_below(child)
