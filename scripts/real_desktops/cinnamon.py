"""Cinnamon: the desktop is one program, plus daemons for the settings and for tray items."""

from pathlib import Path

from .session import SERVICE, RealDesktop

KEYS = "org.cinnamon.desktop.keybindings"


class Cinnamon(RealDesktop):
    name = "X-Cinnamon"
    main_package = "cinnamon"
    file_manager = "nemo"
    shortcuts_page = "cinnamon-settings"
    shortcuts_title = "Keyboard"

    def start_session(self):
        self.set_appearance("light")
        self.start("settings", ["csd-xsettings"])
        self.start("keys", ["csd-media-keys"])
        watcher = Path("/usr/libexec/xapps/sn-watcher/xapp-sn-watcher")
        self.start("tray", [watcher])
        self.start("desktop", ["cinnamon"])
        self.wait_for_window_manager()

    def set_appearance(self, look):
        theme = {"light": "Adwaita", "dark": "Adwaita-dark"}[look]
        self.set_option("org.cinnamon.desktop.interface", "gtk-theme", theme)

    def shortcut(self):
        return next((name for name in self.setting(KEYS, "custom-list")
                     if SERVICE in self.setting(entry_of(name), "command")), None)

    def bind(self, entry):
        self.set_option(entry_of(entry), "binding", ["<Primary><Super>y"])
        # Cinnamon watches the list only, so its own settings page does the same.
        names = self.setting(KEYS, "custom-list")
        self.set_option(KEYS, "custom-list", [*names, "__dummy__"])
        self.set_option(KEYS, "custom-list", names)


def entry_of(name):
    return f"{KEYS}.custom-keybinding:/org/cinnamon/desktop/keybindings/custom-keybindings/{name}/"
