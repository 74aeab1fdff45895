"""XFCE: its window manager, its panel, and the daemon that applies its settings."""

from .session import SERVICE, RealDesktop

KEYS = "xfce4-keyboard-shortcuts"


class Xfce(RealDesktop):
    name = "XFCE"
    main_package = "xfce4-panel"
    file_manager = "thunar"
    shortcuts_page = "xfce4-keyboard-settings"
    shortcuts_title = "Keyboard"
    way_to_entry = ("Send To",)

    def start_session(self):
        self.set_appearance("light")
        self.start("settings", ["xfsettingsd", "--no-daemon", "--disable-wm-check"])
        self.start("window-manager", ["xfwm4", "--compositor=off"])
        self.wait_for_window_manager()
        self.start("background", ["xfdesktop"])
        self.start("panel", ["xfce4-panel"])

    def set_appearance(self, look):
        theme = {"light": "Adwaita", "dark": "Adwaita-dark"}[look]
        self.set_option("xsettings", "/Net/ThemeName", theme)
        self.set_option("xsettings", "/Net/IconThemeName", "Adwaita")

    def shortcut(self):
        """On XFCE every command has a key: an entry is the name of its property."""
        listed = self.run("xfconf-query", "--channel", KEYS, "--list", "--verbose")
        return next((line.split()[0] for line in listed.splitlines() if SERVICE in line), None)

    def bind(self, entry):
        command = self.run("xfconf-query", "--channel", KEYS, "--property", entry)
        self.run("xfconf-query", "--channel", KEYS, "--property", entry, "--reset")
        self.set_option(KEYS, "/commands/custom/<Primary><Super>y", command)

    def set_option(self, channel, name, text):
        self.run("xfconf-query", "--channel", channel, "--property", name, "--create",
                 "--type", "string", "--set", text)
