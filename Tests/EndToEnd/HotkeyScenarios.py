"""The hotkey: it asks about the selected or copied files, and the clipboard is preserved."""

import itertools
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from Scenario import PROGRAMS, Scenario, wait_for
from Xlib import X, XK
from Xlib.ext import xtest
from virtual_desktop.services import Services
from virtual_desktop.wayland import WaylandDesktop

STAND_IN = Path(__file__).with_name("virtual_desktop") / "copying_window.py"
NOTHING_SELECTED = "Nothing is selected. Select audio files or folders in the file manager, " \
    "then press the hotkey."
NOTHING_COPIED = "No files have been copied. Copy audio files or folders in the file manager " \
    "(Ctrl+C), then press the hotkey."
NO_READER = "Here, copied files can only be read with the tool wl-paste. Install the package " \
    "wl-clipboard, then press the hotkey again."
KEYS_HELD = "The keys of the hotkey were not let go. Press it briefly."


class HotkeyScenarios(Scenario):
    def setUp(self):
        super().setUp()
        self.services = Services(self.desktop, PROGRAMS)
        self.song = self.folder("Song Demos")
        self.mix = self.song / "Mix & more.wav"
        self.mix.write_bytes(b"RIFF")
        self.uri = self.mix.as_uri().encode()
        self.start(always_watch=self.folder("Bounces"))
        self.numbers = itertools.count()

    def press_hotkey(self, **environment):
        """Starts the command that a desktop starts."""
        return self.services.run("add-selection", environment=environment)

    def expect_prompt(self, courier, text="Mix & more.wav\nfrom Song Demos"):
        self.connect.prompt(text).answer("Cancel")
        self.assertEqual(courier.wait(timeout=10), 0, self.desktop.log("courier"))

    def expect_message(self, courier, text):
        self.assertEqual(courier.wait(timeout=10), 1)
        self.assertEqual(self.desktop.wait_for_notification(text)["summary"], "Add to Stemvault")
        self.assertIn(text, self.desktop.log("courier"))


class HotkeyOnX11(HotkeyScenarios):
    def start_window(self, window_class, contents):
        """Opens a window with a selection, or with "-" takes the clipboard at once. Returns its name."""
        name = f"window-{next(self.numbers)}"
        arguments = []
        for format_name, content in contents.items():
            file = self.desktop.folder / f"content-{next(self.numbers)}"
            file.write_bytes(content)
            arguments += [format_name, file]
        self.desktop.start(name, [sys.executable, STAND_IN, window_class, name, *arguments])
        if window_class == "-":
            wait_for("the clipboard to be taken", lambda: "copied" in self.desktop.log(name))
        else:
            self.desktop.display.activate(wait_for("the window", lambda: next(
                (window for window, title in self.desktop.display.windows().items()
                 if title == name), None)))
        return name

    def clipboard(self, format_name):
        return subprocess.run(
            ["xclip", "-o", "-selection", "clipboard", "-t", format_name], check=True,
            env=self.desktop.environment, capture_output=True, timeout=10).stdout

    def hold(self, key, kind):
        display = self.desktop.display.connection
        xtest.fake_input(display, kind, display.keysym_to_keycode(XK.string_to_keysym(key)))
        display.sync()

    def wait_until_it_waits(self, courier):
        """Waits until neither the Courier nor its child is running in any of twenty checks in a row."""
        looks = []

        def asleep():
            children = Path(f"/proc/{courier.pid}/task/{courier.pid}/children").read_text().split()
            states = [Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0]
                      for pid in (courier.pid, *children)]
            looks.append(states == ["S", "S"])
            return len(looks) > 20 and all(looks[-20:])
        wait_for("the Courier to wait", asleep)

    def test_a_selection_in_every_format_is_asked_about(self):
        rows = {
            "x-special/gnome-copied-files": b"copy\n" + self.uri,
            "x-special/mate-copied-files": b"cut\n" + self.uri,
            "text/uri-list": self.uri + b"\r\n",
            "UTF8_STRING": b"x-special/nautilus-clipboard\ncopy\n" + self.uri + b"\n",
        }
        # One of them is sent in portions, one is empty.
        before = {"UTF8_STRING": b"before", "text/html": b"<b>" * 200_000, "x-test/empty": b""}
        for format_name, content in rows.items():
            with self.subTest(format_name):
                earlier = self.start_window("-", before)
                self.start_window("files", {format_name: content, "STRING": b"Mix"})
                self.expect_prompt(self.press_hotkey())
                self.assertIn("lost", self.desktop.log(earlier))
                for each, text in before.items():
                    self.assertEqual(self.clipboard(each), text)
        self.assertTrue(self.mix.exists())

    def test_a_selection_of_very_many_files_arrives(self):
        many = self.folder("Many")
        for number in range(20_000):
            (many / f"{number}.wav").touch()
        uris = "".join(f"file://{many}/{number}.wav\r\n" for number in range(20_000))
        self.start_window("files", {"text/uri-list": uris.encode()})
        self.expect_prompt(self.press_hotkey(), "+ 19999 more waiting")

    def test_the_keys_of_the_hotkey_are_let_go_first(self):
        window = self.start_window("files", {"text/uri-list": self.uri})
        for key in ("Shift_L", "Super_L", "F9"):
            self.hold(key, X.KeyPress)
        courier = self.press_hotkey()
        self.wait_until_it_waits(courier)
        self.assertNotIn(f"key {ord('c')}", self.desktop.log(window))
        for key in ("F9", "Shift_L", "Super_L"):
            self.hold(key, X.KeyRelease)
        self.expect_prompt(courier)
        self.start_window("files", {"text/uri-list": self.uri})
        self.hold("F9", X.KeyPress)
        self.expect_message(self.press_hotkey(), KEYS_HELD)
        self.hold("F9", X.KeyRelease)

    def test_the_letter_is_pressed_in_every_layout_that_has_it(self):
        display = self.desktop.display.connection
        key = display.keysym_to_keycode(ord("c"))
        russian = [XK.string_to_keysym(name) for name in ("Cyrillic_es", "Cyrillic_ES")]
        self.start_window("files", {"text/uri-list": self.uri})
        display.change_keyboard_mapping(key, [[*russian, ord("c"), ord("C")]])
        display.sync()
        self.expect_prompt(self.press_hotkey())
        self.start_window("files", {"text/uri-list": self.uri})
        display.change_keyboard_mapping(key, [[*russian, *russian]])
        display.sync()
        self.expect_message(self.press_hotkey(), NOTHING_SELECTED)

    def test_without_a_window_manager_the_focus_tells_the_window(self):
        self.start_window("files", {})
        manager = self.desktop.processes["window-manager"]
        files = self.desktop.display.active_window()
        manager.terminate()
        manager.wait()
        display = self.desktop.display.connection
        display.screen().root.delete_property(display.intern_atom("_NET_SUPPORTING_WM_CHECK"))
        inner = display.create_resource_object("window", files).create_window(0, 0, 9, 9, 0, 0)
        inner.map()
        for focus, message in ((inner, NOTHING_SELECTED), (X.PointerRoot, NOTHING_COPIED)):
            display.set_input_focus(focus, X.RevertToPointerRoot, X.CurrentTime)
            display.sync()
            self.expect_message(self.press_hotkey(), message)

    def test_without_a_selection_the_clipboard_stays_untouched(self):
        earlier = self.start_window("-", {"UTF8_STRING": b"before"})
        self.start_window("files", {})
        self.expect_message(self.press_hotkey(), NOTHING_SELECTED)
        self.assertNotIn("lost", self.desktop.log(earlier))
        self.start_window("files", {"UTF8_STRING": b"a word"})
        self.expect_message(self.press_hotkey(), NOTHING_SELECTED)
        self.assertEqual(self.clipboard("UTF8_STRING"), b"before")

    def test_in_a_terminal_no_key_is_pressed(self):
        terminal = self.start_window("xterm", {"UTF8_STRING": b"a word"})
        self.expect_message(self.press_hotkey(), NOTHING_COPIED)
        self.start_window("-", {"text/uri-list": self.uri})
        self.expect_prompt(self.press_hotkey())
        # On Wayland, GNOME shares the clipboard with X.
        self.expect_prompt(self.press_hotkey(
            WAYLAND_DISPLAY="wayland-0", XDG_CURRENT_DESKTOP="ubuntu:GNOME"))
        self.assertNotIn("key", self.desktop.log(terminal))


class HotkeyOnWayland(HotkeyScenarios):
    kind_of_desktop = WaylandDesktop

    def copy(self, format_name, content):
        subprocess.run(["wl-copy", "--type", format_name], input=content, check=True,
                       env=self.desktop.environment, timeout=10)

    def test_files_copied_before_are_asked_about(self):
        self.expect_message(self.press_hotkey(), NOTHING_COPIED)
        self.copy("text/uri-list", self.uri + b"\r\n")
        self.expect_prompt(self.press_hotkey())
        self.copy("text/plain", b"a word")
        self.expect_message(self.press_hotkey(), NOTHING_COPIED)
        programs = self.folder("programs")
        (programs / "setpriv").symlink_to(shutil.which("setpriv"))
        self.expect_message(self.press_hotkey(PATH=str(programs)), NO_READER)


if __name__ == "__main__":
    unittest.main()
