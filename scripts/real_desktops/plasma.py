"""Plasma on X11 and on Wayland: KWin and the shell, with the daemons that they use."""

import shutil
from pathlib import Path

import dbus

from virtual_desktop import wait_for

from .nested import NestedDisplay, WaylandFileManager
from .session import SERVICE, STARTING, RealDesktop

KEYS = ("org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel")
CONTROL_SUPER_Y = 0x14000059  # Qt's code for the key combination.


class PlasmaX11(RealDesktop):
    name = "KDE"
    main_package = "plasma-workspace"
    file_manager = "dolphin"
    shortcuts_page = "systemsettings"
    shortcuts_title = "Shortcuts"

    def start_session(self):
        generation = "6" if shutil.which("kded6") else "5"
        self.environment |= {"KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": generation,
                             "DESKTOP_SESSION": "plasma", "XDG_MENU_PREFIX": "plasma-"}
        self.tell_bus()
        self.start_window_manager()
        self.set_appearance("light")
        self.start("daemon", [f"kded{generation}"])
        self.start("shell", ["plasmashell"])

    def start_window_manager(self):
        self.start("keys", [*Path("/usr").glob("lib/*/libexec/kglobalacceld"), "kglobalaccel5"][:1])
        self.start("window-manager", ["kwin_x11"])
        self.wait_for_window_manager()

    def set_appearance(self, look):
        scheme = {"light": "BreezeLight", "dark": "BreezeDark"}[look]
        self.run("plasma-apply-colorscheme", scheme)

    def shortcut(self):
        """The name of an entry with the command, if the daemon knows it."""
        components = {str(component[0]) for component in self.call(*KEYS, "allMainComponents")}
        return next((entry.name for entry in Path("/usr/share/kglobalaccel").glob("*.desktop")
                     if SERVICE in entry.read_text() and entry.name in components), None)

    def bind(self, entry):
        action = dbus.Array([entry, "_launch", "Add to Stemvault", "Add to Stemvault"], signature="s")
        self.call(*KEYS, "setForeignShortcut", "asai", action,
                  dbus.Array([CONTROL_SUPER_Y], signature="i"))


class PlasmaWayland(PlasmaX11):
    session_type = "wayland"

    def start_window_manager(self):
        """Starts KWin in a window on the display, with its own X server for X11 programs."""
        display_file = self.folder / "display_file"
        self.environment |= {"KWIN_COMPOSE": "Q"}  # Software rendering: OpenGL would need a graphics card.
        outer = self.environment.pop("DISPLAY")
        self.start("window-manager", [
            "kwin_wayland", "--x11-display", outer, "--width", 1280, "--height", 800, "--xwayland",
            "--no-lockscreen", "--socket", "wayland-0", "--exit-with-session",
            self.display_writer(display_file)], {"DISPLAY": outer})
        wait_for("the compositor", display_file.exists, STARTING)
        self.environment |= {"WAYLAND_DISPLAY": "wayland-0", "DISPLAY": display_file.read_text().strip()}
        self.tell_bus()
        self.display = NestedDisplay(self.environment["DISPLAY"], self.display)

    def display_writer(self, file):
        """A program that writes the name of the display for X11 programs to a file, and keeps running."""
        path = self.made_folder("bin") / "teller"
        path.write_text(f'#!/bin/sh\necho "$DISPLAY" >{file}.new\nmv {file}.new {file}\n'
                        "exec sleep infinity\n")
        path.chmod(0o755)
        return path

    def open_file_manager(self, folder):
        return WaylandFileManager(self, self.file_manager, folder)
