"""The services in the menus of real file managers."""

import unittest

from Scenario import PROGRAMS, Scenario
from virtual_desktop.file_manager import FileManager
from virtual_desktop.services import Services


class FileManagerScenarios(Scenario):
    def use(self, name, *way):
        """Chooses both services in the menu of a selection."""
        services = Services(self.desktop, PROGRAMS)
        song, projects = self.folder("Song Demos"), self.folder("Projects")
        for mix in ("Bridge.flac", "100% Größe & more's.wav"):
            (song / mix).write_bytes(b"RIFF")
        self.start(projects_root=projects, always_watch=self.folder("Bounces"))
        manager = FileManager(self.desktop, name, song)
        manager.choose(*way, "Add to Stemvault")
        self.connect.prompt("from Song Demos\n\n+ 1 more waiting").answer("Add All (2)")
        self.desktop.wait_for_notification("2 files → Client A")
        manager.choose(*way, "Create Stemvault Playlist")
        prompt = self.connect.window("Create Stemvault playlist")
        self.assertEqual(prompt.field_text(), "Song Demos")
        prompt.answer("Create")
        services.wait_for_url()
        self.assertEqual([len(list(project.iterdir())) for project in projects.iterdir()], [2])

    def test_caja(self):
        self.use("caja")

    def test_nemo(self):
        self.use("nemo")

    def test_pcmanfm_qt(self):
        self.use("pcmanfm-qt")

    def test_thunar(self):
        self.use("thunar", "Send To")


if __name__ == "__main__":
    unittest.main()
