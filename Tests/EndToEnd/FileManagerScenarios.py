"""The services in the menus of real file managers, and the hotkey there."""

import subprocess
import unittest

from Scenario import PROGRAMS, Scenario, wait_for
from virtual_desktop.file_manager import FileManager
from virtual_desktop.services import Services


class FileManagerScenarios(Scenario):
    def use(self, name, *way):
        """Presses the hotkey, and chooses both services in the menu of a selection."""
        services = Services(self.desktop, PROGRAMS)
        song, projects = self.folder("Song Demos"), self.folder("Projects")
        for mix in ("Bridge.flac", "100% Größe & more's.wav"):
            (song / mix).write_bytes(b"RIFF")
        self.start(projects_root=projects, always_watch=self.folder("Bounces"))
        manager = FileManager(self.desktop, name, song)
        self.select_all(manager)
        self.press_hotkey(services)
        manager.choose(*way, "Add to Stemvault")
        self.connect.prompt("from Song Demos\n\n+ 1 more waiting").answer("Add All (2)")
        self.desktop.wait_for_notification("2 files → Client A")
        manager.choose(*way, "Create Stemvault Playlist")
        prompt = self.connect.window("Create Stemvault playlist")
        self.assertEqual(prompt.field_text(), "Song Demos")
        prompt.answer("Create")
        services.wait_for_url()
        self.assertEqual([len(list(project.iterdir())) for project in projects.iterdir()], [2])

    def select_all(self, manager):
        """With the menu, which shows that the folder has been read."""
        if manager.name != "pcmanfm-qt":  # After its menu was open, Ctrl+C copies only file names.
            manager.open_menu()
            return manager.close_menu()

        def is_selected():
            manager.select_all()
            return any("selected" in node.name() for window in self.desktop.accessibility.windows()
                       for node in window.node.walk())
        return wait_for("the files to be selected", is_selected)

    def press_hotkey(self, services):
        """The clipboard stays as it was."""
        clipboard = ["xclip", "-selection", "clipboard"]
        options = {"check": True, "timeout": 10, "env": self.desktop.environment}
        subprocess.run(clipboard, input=b"before", stdout=subprocess.DEVNULL, **options)
        courier = services.run("add-selection")
        self.connect.prompt("from Song Demos\n\n+ 1 more waiting").answer("Cancel")
        self.assertEqual(courier.wait(timeout=10), 0, self.desktop.log("courier"))
        found = subprocess.run([*clipboard, "-o"], stdout=subprocess.PIPE, **options).stdout
        self.assertEqual(found, b"before")

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
