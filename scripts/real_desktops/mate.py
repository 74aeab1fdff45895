"""MATE: its window manager, its panel, and the daemon that applies its settings."""

from .session import SERVICE, RealDesktop


class Mate(RealDesktop):
    name = "MATE"
    main_package = "mate-panel"
    file_manager = "caja"
    shortcuts_page = "mate-keybinding-properties"

    def start_session(self):
        self.be("light")
        self.start("settings", ["mate-settings-daemon"])
        self.start("window-manager", ["marco", "--no-composite"])
        self.wait_for_window_manager()
        self.display.set_background(0x5b7186)
        self.start("panel", ["mate-panel"])

    def be(self, look):
        theme = {"light": "Adwaita", "dark": "Adwaita-dark"}[look]
        self.set_option("org.mate.interface", "gtk-theme", theme)

    def shortcut(self):
        return next((number for number in range(10)
                     if SERVICE in self.setting(entry_of(number), "action")), None)

    def add_shortcut(self, command):
        for key, value in (("name", "Add to Stemvault"), ("action", command)):
            self.set_option(entry_of(1), key, value)

    def bind(self, entry, key):
        self.set_option(entry_of(entry), "binding", key)


def entry_of(number):
    return f"org.mate.control-center.keybinding:/org/mate/desktop/keybindings/custom{number}/"
