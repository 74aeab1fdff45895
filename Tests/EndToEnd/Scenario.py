"""The base of all scenarios: gives each a separate desktop, and keeps evidence of failures."""

import filecmp
import os
import unittest
from pathlib import Path

from virtual_desktop import (  # noqa: F401 (the scenarios take wait_for from here)
    StandInDaw, StemvaultConnect, VirtualDesktop, live_alone, wait_for)

PROGRAMS = Path(os.environ["STEMVAULT_PROGRAMS"])
# The folder of the stand-in DAW, which an installation does not contain.
BUILT = Path(os.environ.get("STEMVAULT_BUILT", PROGRAMS))

live_alone()


def troubles(result):
    return len(result.errors) + len(result.failures)


class Scenario(unittest.TestCase):
    kind_of_desktop = VirtualDesktop
    notifications = "body,actions"

    def run(self, result=None):
        self.result, self.troubles_before = result, troubles(result)
        with self.kind_of_desktop(notifications=self.notifications,
                                  kind=os.environ.get("STEMVAULT_DESKTOP")) as self.desktop:
            super().run(result)

    def setUp(self):
        self.client_a, self.client_b = self.folder("Client A"), self.folder("Client B")

    def tearDown(self):
        """At the end of each scenario the program must still run, and quit cleanly when asked."""
        status = self.connect.quit() if troubles(self.result) == self.troubles_before else None
        if status != 0:
            evidence = BUILT.parent / "failures" / self.id()
            self.desktop.keep_evidence(evidence)
            print(f"{self.desktop.log('stemvault-connect')}\nThe evidence is in {evidence}")
        self.assertIn(status, (0, None), "the program's exit status")

    def folder(self, name):
        return self.desktop.made_folder(f"home/{name}")

    def start(self, program=PROGRAMS / "stemvault-connect", **settings):
        settings.setdefault("folders", [self.client_a, self.client_b])
        self.connect = StemvaultConnect(self.desktop, program, **settings)

    def start_daw(self):
        self.song = self.folder("Sessions/Big Song")
        self.daw = StandInDaw(
            self.desktop, BUILT / "stand-in-daw", self.session_file(self.song))

    def start_with_session(self, **settings):
        """Starts a DAW with an open session, and the program, which must find it."""
        self.start_daw()
        self.start(**settings)
        self.connect.wait_until_it_watches(self.song)

    def session_file(self, folder):
        file = folder / f"{folder.name}.rpp"
        file.write_text("<REAPER_PROJECT>\n")
        return file

    def bounce_and_ask(self, name, **pace):
        """Bounces a mix, and returns the prompt that asks about it."""
        self.daw.bounce(self.song / name, **pace)
        return self.connect.prompt(name)

    def assert_copied(self, mix, folder):
        self.assertTrue(filecmp.cmp(mix, folder / mix.name, shallow=False), f"{mix} differs")
