"""Starting, starting a second time, and quitting."""

import os
import shutil
import unittest

from Scenario import Scenario


class LifecycleScenarios(Scenario):
    def test_without_a_display_it_says_so_in_one_line(self):
        self.start(always_watch=self.folder("Bounces"))
        program = self.connect.program
        without_plugins = shutil.copy2(program, self.folder("bin"))
        (self.folder("bin") / "qt.conf").write_text("[Paths]\nPlugins=/nowhere\n")
        missing = dict.fromkeys(["DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS"])
        for name, program, wayland, text in (
                ("lost", program, None, "there is no display"),
                ("gone", program, "gone", "there is no display"),
                ("lacking", without_plugins, "gone", "the package qt6-wayland")):
            lost = self.desktop.start(name, [program], missing | {"WAYLAND_DISPLAY": wayland})
            self.assertEqual(lost.wait(timeout=10), 1)
            self.assertRegex(self.desktop.log(name), f"^[^\n]*{text}[^\n]*\n$")

    def test_its_threads_share_a_heap(self):
        self.start_with_session()
        if self.connect.replaces_allocator():
            self.skipTest("a sanitizer replaces the allocator")
        self.assertGreater(len(os.listdir(f"/proc/{self.connect.process.pid}/task")), 2)
        self.assertLessEqual(self.connect.heaps_of_threads(), 1)

    def test_it_ends_at_once_though_a_prompt_is_open(self):
        self.start_with_session()
        settings = self.connect.settings()
        self.bounce_and_ask("Mix.wav")
        self.assertEqual(self.connect.quit(), 0)
        self.assertEqual(self.connect.settings(), settings)
        self.assertEqual(list(self.client_a.iterdir()), [])


if __name__ == "__main__":
    unittest.main()
