"""Takes the pictures of the documentation, on a light and on a dark desktop.

    picture_book.py PROGRAMS PICTURES
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import (  # noqa: E402
    StandInDaw, StemvaultConnect, TimedOut, VirtualDesktop, live_alone)
from virtual_desktop.file_manager import FileManager  # noqa: E402
from virtual_desktop.services import Services  # noqa: E402
from preferences_pages import PreferencesPages  # noqa: E402


class PictureBook:
    def __init__(self, desktop, programs, pictures, suffix):
        self.desktop, self.programs, self.pictures, self.suffix = desktop, programs, pictures, suffix
        self.song = desktop.made_folder("home/Sessions/Big Song")
        self.folders = [desktop.made_folder(f"home/Dropbox/Stemvault/{name}")
                        for name in ("Northern Lights EP", "Client Review", "Radio Edits")]
        session_file = self.song / "Big Song.rpp"
        session_file.write_text("<REAPER_PROJECT>\n")
        self.daw = StandInDaw(desktop, programs / "stand-in-daw", session_file)

    def take(self, name, window, whole_screen=False):
        window.focus()
        path = self.pictures / f"{name}{self.suffix}.png"
        self.desktop.display.take_picture(path, None if whole_screen else window.id())
        print(path)

    def start(self, **settings):
        self.connect = StemvaultConnect(self.desktop, self.programs / "stemvault-connect", **settings)
        self.connect.wait_until_it_watches(self.song)

    def ask(self, name):
        self.daw.bounce(self.song / name)
        return self.connect.prompt(name)

    def make(self):
        self.start(folders=self.folders, projects_root=self.folders[0].parent)
        self.take_prompts()
        self.take_new_folder()
        self.take_copying()
        self.connect.quit()
        self.start(folders=[])
        self.take("no-destination", self.ask("Big Song - Mix 6.wav"))

    def take_prompts(self):
        prompt = self.ask("Big Song - Mix 1.wav")
        self.take("desktop", prompt, whole_screen=True)
        self.take("prompt", prompt)
        self.daw.bounce(self.song / "Big Song - Mix 2.wav")
        self.daw.bounce(self.song / "Big Song - Instrumental.wav")
        self.daw.bounce(self.song / "Big Song - A cappella.wav")
        self.connect.wait_until_it_rests()
        prompt.answer("Skip")
        prompt = self.connect.prompt("more waiting")
        self.take("prompt-add-all", prompt)
        prompt.answer("Cancel")

    def take_new_folder(self):
        prompt = self.ask("Big Song - Mix 3.wav")
        prompt.choose("New Folder…")
        prompt.answer("Add")
        panel = self.connect.window("Choose or create a folder for this Stemvault project.")
        self.take("new-folder", panel)
        panel.answer("Cancel")

    def take_copying(self):
        (self.folders[0] / "Big Song - Mix 4.wav").touch()
        self.ask("Big Song - Mix 4.wav").answer("Add")
        question = self.connect.window("Replace existing file?")
        self.take("replace", question)
        question.answer("Cancel")
        prompt = self.ask("Big Song - Mix 5.wav")
        self.folders[0].rename(self.folders[0].with_name("Renamed"))
        prompt.answer("Add")
        alert = self.connect.window("Copy failed")
        self.take("copy-failed", alert)
        alert.answer("OK")


class FileManagerPages:
    """Both services in the menus of real file managers, and the prompt for a playlist's name."""

    MENUS = {"nemo": [], "pcmanfm-qt": [], "thunar": ["Send To"]}

    def __init__(self, programs, pictures):
        self.programs, self.pictures = programs, pictures

    def make(self):
        for name in self.MENUS:
            # PCManFM-Qt occasionally does not expose the contents of its menus, so a second try is made.
            try:
                self.take(name)
            except TimedOut:
                self.take(name)

    def take(self, name):
        with VirtualDesktop(size="1100x620") as desktop:
            Services(desktop, self.programs)
            song = desktop.made_folder("home/Big Song")
            for mix in ("A cappella.wav", "Instrumental.wav", "Mix 1.wav", "Mix 2.flac"):
                (song / mix).write_bytes(b"RIFF")
            connect = StemvaultConnect(desktop, self.programs / "stemvault-connect",
                                       projects_root=desktop.made_folder("home/Dropbox/Stemvault"),
                                       always_watch=desktop.made_folder("home/Bounces"))
            manager = FileManager(desktop, name, song)
            manager.open_menu()
            manager.entry(*self.MENUS[name], "Create Stemvault Playlist")
            self.keep(desktop, name)
            manager.close_menu()
            manager.choose(*self.MENUS[name], "Create Stemvault Playlist")
            prompt = connect.window("Create Stemvault playlist")
            prompt.focus()
            if name == "nemo":
                self.keep(desktop, "playlist", prompt.id())

    def keep(self, desktop, name, window=None):
        path = self.pictures / f"{name}.png"
        desktop.display.take_picture(path, window)
        print(path)


def main():
    live_alone()
    programs, pictures = (Path(argument).resolve() for argument in sys.argv[1:])
    for look, suffix in (("light", ""), ("dark", "-dark")):
        with VirtualDesktop(size="1100x620", look=look) as desktop:
            PictureBook(desktop, programs, pictures, suffix).make()
        PreferencesPages(programs, pictures, suffix, look).make()
    for percent, scale in (("150", "1.5"), ("200", "2")):
        PreferencesPages(programs, pictures, f"-{percent}-percent", "light", scale).make()
    FileManagerPages(programs, pictures).make()


if __name__ == "__main__":
    main()
