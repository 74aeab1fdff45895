"""LXQt: its panel and its daemons, with openbox, as in Debian's task."""

from pathlib import Path

import dbus

from .session import SERVICE, Impossible, RealDesktop

DAEMON = ("org.lxqt.global_key_shortcuts", "/daemon", "org.lxqt.global_key_shortcuts.daemon")

CONFIGURATION = """[General]
theme=ambiance
icon_theme=Papirus
[Palette]
base_color={base}
text_color={text}
window_color={window}
window_text_color={text}
[Qt]
style=Fusion
"""


class Lxqt(RealDesktop):
    name = "LXQt"
    main_package = "lxqt-panel"
    file_manager = "pcmanfm-qt"
    shortcuts_page = "lxqt-config-globalkeyshortcuts"
    shortcuts_title = "Global Actions"

    def start_session(self):
        # The variables that the session's own starter sets.
        self.environment |= {"XDG_CONFIG_DIRS": "/etc:/etc/xdg:/usr/share", "QT_PLATFORM_PLUGIN": "lxqt",
                             "QT_QPA_PLATFORMTHEME": "lxqt", "XDG_MENU_PREFIX": "lxqt-"}
        self.configure("light")
        self.tell_bus()
        self.start("window-manager", ["openbox", "--sm-disable"])
        self.wait_for_window_manager()
        self.display.set_background(0x5b7186)
        self.start("notifications", ["lxqt-notificationd"])
        self.start("keys", ["lxqt-globalkeysd"])
        self.start("panel", ["lxqt-panel"])

    def set_appearance(self, look):
        if not list(Path("/usr/lib").glob("*/qt6/plugins/platformthemes/*lxqt*")):
            raise Impossible("Debian 12 has LXQt's colours for programs of Qt 5 only")
        self.configure(look)

    def shortcut(self):
        """The daemon's number for the entry."""
        actions = self.call(*DAEMON, "getAllActions")
        return next((number for number, action in actions.items() if SERVICE in str(action)), None)

    def bind(self, entry):
        self.call(*DAEMON, "changeShortcut", "ts", dbus.UInt64(entry), "Control+Meta+Y")

    def configure(self, look):
        base, window, text = {"light": ("#ffffff", "#efefef", "#000000"),
                              "dark": ("#202020", "#303030", "#ffffff")}[look]
        self.write(".config/lxqt/lxqt.conf",
                   CONFIGURATION.format(base=base, window=window, text=text))
