"""Windows and tray icon follow the desktop, light or dark, while the program runs."""

import unittest

from Scenario import Scenario
from virtual_desktop import OlderTray, Tray, wait_for
from virtual_desktop.desktop import PORTAL

KDE_COLOURS = """[Colors:Window]
BackgroundNormal=32,35,38
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=252,252,252
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
"""


class AppearanceScenarios(Scenario):
    """Light and dark, judged by the pixels on the screen."""

    def open(self, desktop):
        self.desktop.environment["XDG_CURRENT_DESKTOP"] = desktop
        self.start()
        self.assertEqual(self.connect.start_again(), 0)
        window = self.connect.window("Stemvault Connect")
        window.focus()
        self.window = window.id()

    def expect(self, look):
        display = self.desktop.display
        wait_for(f"a {look} window",
                 lambda: (display.brightness(self.window) < 100) == (look == "dark"))

    def test_plasma_turned_light_and_dark_again(self):
        colours = self.desktop.home / ".config/kdeglobals"
        colours.parent.mkdir(parents=True, exist_ok=True)
        colours.write_text(KDE_COLOURS)
        self.desktop.choose_scheme(1)
        self.open("KDE")
        self.expect("dark")
        for scheme, look in ((2, "light"), (1, "dark"), (0, "light"), (1, "dark")):
            self.desktop.choose_scheme(scheme)
            self.expect(look)

    def test_gnome_turned_dark_and_light_again(self):
        self.open("GNOME")
        self.expect("light")
        self.desktop.start_service("appearance_portal", PORTAL)  # Reports dark, and starts late.
        self.expect("dark")
        for scheme, look in ((0, "light"), (1, "dark"), (2, "light")):
            self.desktop.choose_scheme(scheme)
            self.expect(look)

    def test_xfce_goes_by_the_theme_of_its_windows(self):
        self.open("XFCE")  # Without a settings manager yet.
        self.expect("light")
        for theme, look in (("Arc-Dark", "dark"), ("Adwaita", "light"), ("Greybird-dark", "dark"),
                            ("Greybird", "light"), ("Adwaita-dark", "dark")):
            self.desktop.display.publish_theme(theme)
            self.expect(look)
        preference = self.desktop.home / ".config/gtk-3.0/settings.ini"
        preference.parent.mkdir(parents=True, exist_ok=True)
        for preferred, theme, look in ((0, "Adwaita-dark", "dark"), (1, "Adwaita", "dark"),
                                       (0, "Adwaita", "light")):
            preference.write_text(
                f"[Settings]\ngtk-application-prefer-dark-theme={preferred}\n")
            self.desktop.display.publish_theme(theme)
            self.assertEqual(self.connect.quit(), 0)
            self.open("XFCE")
            self.expect(look)

    def test_the_icon_of_an_older_tray_goes_with_it(self):
        tray = OlderTray(self.desktop).start()
        self.start()
        glyph = tray.icon()
        display = self.desktop.display
        light = display.pixels(display.frame(glyph))
        self.desktop.choose_scheme(1)
        wait_for("another icon", lambda: display.pixels(display.frame(glyph)) != light)

    def test_panels_are_told_to_read_the_icon_again(self):
        tray = Tray(self.desktop).start()
        self.start()
        tray.item()
        before = tray.new_icons()
        self.desktop.choose_scheme(1)
        wait_for("a new icon at once and once more", lambda: tray.new_icons() == before + 2)


if __name__ == "__main__":
    unittest.main()
