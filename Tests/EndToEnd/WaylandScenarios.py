"""A bounce without an X server, and with only XWayland."""

import unittest

from Scenario import Scenario
from virtual_desktop import Tray
from virtual_desktop.wayland import WaylandDesktop, XWaylandDesktop


class BounceOnWayland(Scenario):
    def follow_a_bounce(self, protocol):
        self.start_with_session()
        prompt = self.bounce_and_ask("Mix.wav")
        self.assertEqual(self.desktop.display.protocol_of(prompt.id()), protocol)
        prompt.answer_by_key("Return")
        self.desktop.wait_for_notification("Mix.wav → Client A")
        self.assert_copied(self.song / "Mix.wav", self.client_a)
        self.assertEqual(self.connect.start_again(), 0)
        self.connect.window("Stemvault Connect").answer_by_key("Escape")
        self.daw.quit()
        self.connect.wait_until_it_leaves(self.song)


class WaylandScenarios(BounceOnWayland):
    kind_of_desktop = WaylandDesktop

    def test_without_x_the_windows_are_native(self):
        self.follow_a_bounce("xdg_shell")

    def test_a_token_that_is_too_long_or_unknown_is_no_harm(self):
        tray = Tray(self.desktop).start()
        self.start()
        item = tray.item()
        for token in ("t" * 5000, "unknown to the compositor"):
            item.pass_token(token)
            item.choose("Preferences…")
            self.connect.window("Stemvault Connect").answer_by_key("Escape")


class XWaylandScenarios(BounceOnWayland):
    kind_of_desktop = XWaylandDesktop

    def test_with_xwayland_the_windows_are_of_x(self):
        self.follow_a_bounce("xwayland")


if __name__ == "__main__":
    unittest.main()
