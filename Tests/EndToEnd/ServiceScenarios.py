"""The services, from the Courier, which a file manager starts, to the browser."""

import os
import sys
import unittest
from pathlib import Path
from urllib.parse import parse_qsl, urlsplit

from Scenario import PROGRAMS, Scenario, wait_for
from virtual_desktop import VirtualDesktop
from virtual_desktop.services import Services, StartedByBus

# Another program that owns our program's name on the bus.
STRANGER = """
import dbus, dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

class Stranger(dbus.service.Object):
    @dbus.service.method("net.stemvault.Connect.Services1", in_signature="sas", out_signature="s")
    def Perform(self, service, uris):
        if service == "createStemvaultPlaylist":
            raise dbus.DBusException(name="org.freedesktop.DBus.Error.InvalidArgs")
        return "a<b> &\x1b[31m\u202e"

bus = dbus.SessionBus(mainloop=DBusGMainLoop())
stranger = Stranger(bus, "/net/stemvault/Connect/Services1")
name = dbus.service.BusName("net.stemvault.Connect", bus)
GLib.MainLoop().run()
"""


class ServiceScenarios(Scenario):
    def setUp(self):
        super().setUp()
        self.services = Services(self.desktop, PROGRAMS)
        self.projects = self.folder("Projects")
        self.song = self.folder("Song Demos")
        self.mixes = [self.make(self.song / name) for name in ("1.wav", "2.WAV", "3.mp3")]

    def start(self, is_running=True):
        """A running program is on the bus once it watches, so the bus does not start it again."""
        watched = self.folder("Bounces") if is_running else None
        super().start(projects_root=self.projects, always_watch=watched, is_running=is_running)

    def make(self, path):
        with open(path, "wb") as file:
            file.write(os.fsencode(path))
        return path

    def expect(self, courier, status):
        self.assertEqual(courier.wait(timeout=10), status, self.desktop.log("courier"))

    def name_prompt(self):
        return self.connect.window("Create Stemvault playlist")

    def test_add_asks_about_each_file_and_ends_with_the_last_answer(self):
        self.start()
        courier = self.services.run("add", "Song Demos/1.wav", self.mixes[1], "Song Demos/gone.wav")
        prompt = self.connect.prompt("1.wav\nfrom Song Demos\n\n+ 1 more waiting")
        self.expect(self.services.run("add", self.mixes[2]), 0)
        prompt.answer("Add")
        prompt = self.connect.prompt("2.WAV\nfrom Song Demos\n\n+ 1 more waiting")
        self.assertIsNone(courier.poll())
        prompt.answer("Add All (2)")
        self.desktop.wait_for_notification("1.wav → Client A")
        self.desktop.wait_for_notification("2 files → Client A")
        self.expect(courier, 0)
        for mix in self.mixes:
            self.assert_copied(mix, self.client_a)

    def test_a_playlist_is_named_made_and_opened_in_the_browser(self):
        self.start()
        courier = self.services.run("playlist", self.song)
        prompt = self.name_prompt()
        self.assertEqual(prompt.field_text(), "Song Demos")
        prompt.focus()
        prompt.type("Create Stemvault playlist", "Größe: A+B & 100%?")
        prompt.answer("Create")
        url = urlsplit(self.services.wait_for_url())
        self.assertEqual((url.scheme, url.path), ("https", ""))
        self.assertEqual(parse_qsl(url.query, strict_parsing=True),
                         [("prefillFolder", "/größe- a+b & 100%?"), ("title", "Größe- A+B & 100%?"),
                          ("autoscan", "1")])
        self.desktop.wait_for_notification(
            "Größe- A+B & 100%? — 3 files copied, opening browser…")
        self.expect(courier, 0)
        for mix in self.mixes:
            self.assert_copied(mix, self.projects / "Größe- A+B & 100%?")

    def test_the_bus_starts_the_program_for_a_service(self):
        self.start(is_running=False)
        courier = self.services.run("playlist", self.song)
        self.connect.process = StartedByBus(self.desktop)
        started = Path(f"/proc/{self.connect.process.pid}/exe")
        self.assertTrue(started.samefile(PROGRAMS / "stemvault-connect"))
        self.name_prompt().answer("Create")
        self.expect(courier, 0)
        self.assertEqual(len(list((self.projects / "Song Demos").iterdir())), 3)

    def test_the_user_is_told_what_is_wrong(self):
        self.start()
        notes = self.make(self.song / "notes.txt")
        for files, text in (([], "No files or folders were selected."),
                            ([notes], "No audio files found in that selection.")):
            self.expect(self.services.run("add", *files), 1)
            note = self.desktop.wait_for_notification(text)
            self.assertEqual(note["summary"], "Add to Stemvault")
            self.assertIn(text, self.desktop.log("courier"))
        courier = self.services.run("playlist", self.song)
        self.name_prompt()
        self.connect.process.kill()
        self.expect(courier, 1)
        self.desktop.wait_for_notification("Stemvault Connect ended before it was done.")
        self.start()

    def test_without_a_browser_the_link_is_shown(self):
        self.start()
        (self.desktop.home / ".config/mimeapps.list").unlink()
        (self.desktop.home / ".local/share/applications/browser.desktop").unlink()
        self.services.run("playlist", self.song)
        self.name_prompt().answer("Create")
        alert = self.connect.window("Couldn't open the browser")
        self.assertTrue(any("open this link manually:\n\nhttps://" in text for text in alert.texts()))
        alert.answer("OK")
        self.desktop.wait_for_notification("Song Demos — 3 files copied, opening browser…")


class UnreachableProgram(unittest.TestCase):
    """Messages that the Courier shows by itself."""

    def test_errors_are_seen_where_the_notification_service_must_be_started(self):
        with VirtualDesktop(notifications=None) as desktop:
            services = Services(desktop, PROGRAMS)
            (desktop.folder / "services/net.stemvault.Connect.service").unlink()
            services.offer_notifications("body,asks-sender")
            self.assertEqual(services.run("add", "mix.wav").wait(timeout=30), 1)
            note = desktop.wait_for_notification(
                "Stemvault Connect is not running and could not be started.")
            self.assertEqual(note["summary"], "Add to Stemvault")

    def test_without_a_desktop_the_message_is_printed(self):
        no_bus = {"DBUS_SESSION_BUS_ADDRESS": None, "XDG_RUNTIME_DIR": "/nowhere"}
        with VirtualDesktop(notifications=None) as desktop:
            services = Services(desktop, PROGRAMS)
            (desktop.folder / "services/net.stemvault.Connect.service").unlink()
            for arguments, environment, status, text in (
                    (("add", "mix.wav"), {}, 1, "is not running and could not be started."),
                    (("add", "mix.wav"), no_bus, 1, "can only be reached from a desktop session."),
                    (("add-selection", "mix.wav"), {}, 2, "usage: courier add|playlist FILES..."),
                    (("delete", "mix.wav"), {}, 2, "usage: courier add|playlist FILES...")):
                courier = services.run(*arguments, environment=environment)
                self.assertEqual(courier.wait(timeout=30), status, arguments)
                self.assertIn(text, desktop.log("courier"))
                (desktop.logs / "courier.log").unlink()

    def test_a_strangers_answer_is_shown_as_plain_text(self):
        for capabilities, shown in (("body,body-markup", "a&lt;b&gt; &amp;\uFFFD[31m\uFFFD"),
                                    ("body", "a<b> &\uFFFD[31m\uFFFD")):
            with VirtualDesktop(notifications=capabilities) as desktop:
                services = Services(desktop, PROGRAMS)
                desktop.start("stranger", [sys.executable, "-c", STRANGER])
                wait_for("the stranger", lambda: desktop.has_bus_name("net.stemvault.Connect"))
                self.assertEqual(services.run("add", "mix.wav").wait(timeout=30), 1)
                desktop.wait_for_notification(shown)
                self.assertIn("a<b> &\uFFFD[31m\uFFFD\n", desktop.log("courier"))
                self.assertEqual(services.run("playlist", "mix.wav").wait(timeout=30), 1)
                desktop.wait_for_notification(
                    "This version of Stemvault Connect does not have that service.")
                program = desktop.start("second", [PROGRAMS / "stemvault-connect"])
                self.assertEqual(program.wait(timeout=30), 1)
                self.assertIn("another program has the name", desktop.log("second"))


if __name__ == "__main__":
    unittest.main()
