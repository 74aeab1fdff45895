"""GNOME: its shell in a window, with the extension that shows tray items."""

import os

from virtual_desktop import wait_for

from .nested import NestedDisplay, WaylandFileManager, all_below
from .session import SERVICE, STARTING, RealDesktop

KEYS = "org.gnome.settings-daemon.plugins.media-keys"
EXTENSION = "ubuntu-appindicators@ubuntu.com"


class Gnome(RealDesktop):
    name = "GNOME"
    session_type = "wayland"
    main_package = "gnome-shell"
    file_manager = "nautilus"
    shortcuts_page = "gnome-control-center"

    def start_session(self):
        for key, value in (("enabled-extensions", [EXTENSION]),
                           ("welcome-dialog-last-shown-version", "999")):
            self.set_option("org.gnome.shell", key, value)
        self.set_appearance("light")
        outer = self.environment.pop("DISPLAY")
        self.start("shell", ["gnome-shell", "--nested", "--wayland", "--wayland-display", "wayland-0"],
                   {"DISPLAY": outer, "MUTTER_DEBUG_DUMMY_MODE_SPECS": "1280x800"})
        wait_for("the shell", lambda: "GNOME Shell started" in self.log("shell"), STARTING)
        # X11 clients need the authority file that the shell writes there.
        key, = self.runtime.glob(".mutter-Xwaylandauth.*")
        self.environment |= {"WAYLAND_DISPLAY": "wayland-0", "DISPLAY": ":1", "XAUTHORITY": str(key)}
        os.environ["XAUTHORITY"] = str(key)
        self.display = NestedDisplay(self.environment["DISPLAY"], self.display)
        self.tell_bus()
        # The shell starts with the overview of all windows.
        overview = self.still_picture(2)
        self.display.press_key("Escape")
        wait_for("the overview to go", lambda: self.picture().changes(overview))
        self.start("settings", ["/usr/libexec/gsd-xsettings"])
        self.start("keys", ["/usr/libexec/gsd-media-keys"])

    def set_appearance(self, look):
        scheme = {"light": "default", "dark": "prefer-dark"}[look]
        theme = {"light": "Adwaita", "dark": "Adwaita-dark"}[look]
        self.set_option("org.gnome.desktop.interface", "color-scheme", scheme)
        self.set_option("org.gnome.desktop.interface", "gtk-theme", theme)

    def shortcut(self):
        return next((path for path in self.setting(KEYS, "custom-keybindings")
                     if SERVICE in self.setting(f"{KEYS}.custom-keybinding:{path}", "command")), None)

    def shows_shortcuts(self):
        """All settings share one window; the list of shortcuts is behind a row of the keyboard page."""
        window = self.accessibility.find_window("Settings")
        return window and any(
            node.name() == "View and Customize Shortcuts" for node in all_below(window.node))

    def bind(self, entry):
        self.set_option(f"{KEYS}.custom-keybinding:{entry}", "binding", "<Control><Super>y")

    def open_file_manager(self, folder):
        return WaylandFileManager(self, self.file_manager, folder)
