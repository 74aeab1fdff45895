"""MATE: its window manager, its panel, and the daemon that applies its settings."""

from .session import SERVICE, RealDesktop

ENTRY = "org.mate.control-center.keybinding:/org/mate/desktop/keybindings/stemvault-connect/"


class Mate(RealDesktop):
    name = "MATE"
    main_package = "mate-panel"
    file_manager = "caja"
    shortcuts_page = "mate-keybinding-properties"
    shortcuts_title = "Keyboard Shortcuts"

    def start_session(self):
        self.set_appearance("light")
        self.start("settings", ["mate-settings-daemon"])
        self.start("window-manager", ["marco", "--no-composite"])
        self.wait_for_window_manager()
        self.display.set_background(0x5b7186)
        self.start("panel", ["mate-panel"])

    def set_appearance(self, look):
        theme = {"light": "Adwaita", "dark": "Adwaita-dark"}[look]
        self.set_option("org.mate.interface", "gtk-theme", theme)

    def shortcut(self):
        """There is no list of the entries: the page reads the folder that contains this one."""
        return ENTRY if SERVICE in self.setting(ENTRY, "action") else None

    def bind(self, entry):
        self.set_option(entry, "binding", "<Control><Mod4>y")
