"""The steps of the soak test. Each starts and ends without an open window.

Every bounce is pending until a prompt asks about it. A prompt about any other file came up twice or without
reason, and a bounce that is still pending at the end was lost.
"""

import filecmp
import os
import shutil
from collections import Counter

from virtual_desktop import StandInDaw, StemvaultConnect, Tray, UpdateFeed, wait_for
from virtual_desktop.connect import NEW_FOLDER
from virtual_desktop.services import Services

SIZES = (10, 4_000, 400_000, 6_000_000, 40_000_000)
EXTENSIONS = ("wav", "WAV", "aiff", "mp3", "flac", "m4a")
MOST_FOLDERS = 6
PANEL = "Choose or create a folder for this Stemvault project."


class ServicesOfRunning(Services):
    """The services of a program that is already running, so nothing needs to be installed."""

    def __init__(self, desktop, programs):
        self.desktop, self.courier = desktop, programs / "courier"
        self._register_browser()


class Steps:
    def __init__(self, desktop, programs, random):
        self.desktop, self.programs, self.random = desktop, programs, random
        self.counts, self.pending, self.names, self.litter = Counter(), {}, 0, []
        self.clients = [self.folder(f"Stemvault/Client {number}") for number in (1, 2, 3)]
        self.always_watched = self.folder("Bounces")
        self.songs = [self.make_song(f"Song {number}") for number in (1, 2, 3, 4)]
        self.song = self.songs[0]
        self.services = ServicesOfRunning(desktop, programs)
        self.tray = Tray(desktop).start()
        self.feed = UpdateFeed(desktop, programs / "stemvault-connect")
        self.start_daw()
        self.connect = StemvaultConnect(
            desktop, self.feed.program, self.clients, self.always_watched, self.folder("Projects"))
        self.connect.wait_until_it_watches(self.song)
        self.kinds = [self.bounce, self.several_bounces, self.growing_bounce, self.taken_name,
                      self.new_folder, self.failed_copy, self.storm, self.folder_moved_in,
                      self.next_session, self.other_daw, self.add_by_service, self.playlist,
                      self.preferences, self.menu, self.look_for_updates]
        self.round = []

    def take_one(self):
        """Performs a step. In each round every kind comes once, those with bounces twice."""
        if not self.round:
            self.round = [*self.kinds, self.bounce, self.several_bounces, self.growing_bounce]
            self.random.shuffle(self.round)
        step = self.round.pop()
        self.counts["steps"] += 1
        try:
            step()
        except AssertionError as error:
            raise AssertionError(f"{step.__name__}: {error}") from error

    def check_that_nothing_is_left(self):
        """Expects no pending bounce and no open window. Removes the files of the steps."""
        self.connect.wait_until_it_rests()
        while self.litter:
            remove(self.litter.pop())
        assert not self.pending, f"no prompt about: {', '.join(self.pending)}"
        windows = [window.texts() for window in self.desktop.accessibility.windows()]
        assert not windows, f"unexpected windows: {windows}"

    def report(self):
        counts = self.counts
        yield f"{counts['prompts']} prompts asked about {counts['bounces']} bounces; " \
            f"{counts['taken along']} bounces were added along with another one, and " \
            f"{counts['dropped']} were dropped along with one. " \
            f"All {counts['copies']} requested copies arrived whole. The DAW had " \
            f"{counts['sessions']} sessions, and the preferences were open {counts['preferences']} times."

    def watched_folders(self):
        """The number of folders that the program watches."""
        return sum(1 for root in (self.song, self.always_watched) for _ in os.walk(root))

    # Steps

    def bounce(self):
        path = self.mix()
        self.start_bounce(path)
        answer = self.random.choice(("Add", "Add", "Add to another", "Skip", "Cancel"))
        prompt, _ = self.question()
        if answer == "Add to another":
            client = self.random.choice(self.clients)
            prompt.focus()
            prompt.choose(client.name)
            prompt.answer("Add")
            self.expect_copy(path, client)
        else:
            prompt.answer(answer)
            if answer == "Add":
                self.expect_copy(path)

    def several_bounces(self):
        """Several bounces wait behind the first prompt; the second one adds or drops the rest."""
        for _ in range(self.random.randint(3, 6)):
            self.start_bounce(self.mix())
        for path in self.pending.values():
            self.daw.wait_for_bounce(path)
        self.connect.wait_until_it_rests()
        self.answer_queue()

    def growing_bounce(self):
        """A short bounce overtakes a long one, whose prompt must not come up before it is whole."""
        long, short = self.mix(), self.mix()
        self.expect(long)
        self.daw.start_bounce(long, 6_000_000, portions=12, milliseconds=300)
        self.start_bounce(short, 4_000)
        for _ in range(2):
            prompt, path = self.question()
            prompt.answer("Add")
            self.expect_copy(path)

    def taken_name(self):
        path = self.mix()
        (self.clients[0] / path.name).write_text("the old mix")
        self.start_bounce(path, 400_000)
        prompt, _ = self.question()
        prompt.answer("Add")
        question = self.connect.window("Replace existing file?")
        if self.random.random() < 0.7:
            question.answer("Replace")
            wait_for("the new mix", lambda: (self.clients[0] / path.name).stat().st_size > 100)
            self.expect_copy(path)
        else:
            question.answer("Cancel")
            assert (self.clients[0] / path.name).read_text() == "the old mix"
            (self.clients[0] / path.name).unlink()

    def new_folder(self):
        folder = self.folder(f"Stemvault/{self.new_name('Client')}")
        path = self.mix()
        self.start_bounce(path, 400_000)
        prompt, _ = self.question()
        prompt.focus()
        prompt.choose(NEW_FOLDER)
        prompt.answer("Add")
        panel = self.connect.window(PANEL)
        panel.type("Directory:", str(folder))
        panel.answer("Use This Folder")
        self.expect_copy(path, folder)

    def failed_copy(self):
        away = self.clients[0].with_name("Away")
        self.clients[0].rename(away)
        self.start_bounce(self.mix(), 4_000)
        prompt, _ = self.question()
        prompt.answer("Add")
        self.connect.window("Copy failed").answer("OK")
        away.rename(self.clients[0])

    def storm(self):
        """Unpacks a tree into the session: hundreds of files, of which few are mixes."""
        tree = self.song / self.new_name("Stems")
        self.make_tree(tree, self.expect)
        self.litter.append(tree)
        self.connect.wait_until_it_rests()
        self.answer_queue()

    def folder_moved_in(self):
        """Old files in a folder that is moved in are not bounces; files written into it afterwards are."""
        elsewhere = self.folder("Elsewhere") / self.new_name("Stems")
        self.make_tree(elsewhere, lambda path: None)
        inside = self.song / elsewhere.name
        elsewhere.rename(inside)
        self.connect.wait_until_it_watches(inside / "9")
        self.start_bounce(inside / "9" / f"{self.new_name('Mix')}.wav", 4_000)
        prompt, path = self.question()
        prompt.answer("Add")
        self.expect_copy(path)
        inside.rename(elsewhere)
        self.connect.wait_until_it_leaves(elsewhere / "9")
        shutil.rmtree(elsewhere)

    def next_session(self):
        left = self.song
        self.song = self.random.choice([song for song in self.songs if song != left])
        self.daw.open(session_file(self.song))
        self.daw.close(session_file(left))
        self.preferences()  # Another window comes to the front, which makes the program scan.
        self.connect.wait_until_it_watches(self.song)
        self.connect.wait_until_it_leaves(left)
        self.counts["sessions"] += 1

    def other_daw(self):
        self.daw.quit()
        self.connect.wait_until_it_leaves(self.song)
        self.song = self.random.choice(self.songs)
        self.start_daw()
        self.connect.wait_until_it_watches(self.song)

    def add_by_service(self):
        folder = self.folder("Demos")
        files = [folder / f"{self.new_name('Demo')}.wav" for _ in range(5)]
        for path in files:
            path.write_bytes(self.random.randbytes(100_000))
            self.expect(path)
        courier = self.services.run("add", *files)
        self.answer_queue()
        assert courier.wait(60) == 0, "the Courier's status"
        shutil.rmtree(folder)

    def playlist(self):
        folder = self.folder(self.new_name("Playlist"))
        mixes = [folder / f"{number}.wav" for number in range(3)]
        for path in mixes:
            path.write_bytes(self.random.randbytes(100_000))
        opened = len(self.services.opened())
        courier = self.services.run("playlist", folder)
        self.connect.window("Create Stemvault playlist").answer("Create")
        assert courier.wait(60) == 0, "the Courier's status"
        wait_for("the browser", lambda: len(self.services.opened()) > opened)
        project = self.desktop.home / "Projects" / folder.name
        for path in mixes:
            self.expect_copy(path, project)
        shutil.rmtree(project)
        shutil.rmtree(folder)

    def preferences(self):
        assert self.connect.start_again() == 0, "the second start's status"
        window = self.connect.window("Stemvault Connect")
        window.focus()
        folders = self.connect.settings()["stemvaultFolders"]
        for folder in folders[len(self.clients):]:
            if len(folders) > MOST_FOLDERS:
                window.press(f"Remove {folder['name']}")
                wait_for("its end", lambda: folder not in self.connect.settings()["stemvaultFolders"])
        self.desktop.display.press_key("Escape")
        window.wait_until_closed()
        self.counts["preferences"] += 1

    def menu(self):
        session = wait_for("the session in the menu", lambda: self.tray.item().titles()[0])
        assert session == self.song.name, f"{session} in the menu"

    def look_for_updates(self):
        self.feed.publish("0")
        self.tray.item().choose("Check for Updates…")
        self.connect.window("You're Up to Date").answer("OK")

    # Parts of the steps

    def folder(self, name):
        return self.desktop.made_folder(f"home/{name}")

    def make_song(self, name):
        folder = self.folder(f"Sessions/{name}")
        for inner in ("Audio Files", "Mixes/Old", "Notes"):
            (folder / inner).mkdir(parents=True)
        session_file(folder).write_text("<REAPER_PROJECT>\n")
        return folder

    def make_tree(self, folder, make_of_mix):
        """Makes forty folders of ten files; every eightieth file is a mix."""
        for number in range(400):
            path = folder / f"{number // 10}" / f"{number}.txt"
            path.parent.mkdir(parents=True, exist_ok=True)
            if number % 80 == 0:
                path = path.with_name(f"{self.new_name('Stem')}.wav")
                make_of_mix(path)
            path.write_bytes(self.random.randbytes(3_000))

    def start_daw(self):
        self.daw = StandInDaw(self.desktop, self.programs / "stand-in-daw", session_file(self.song),
                              self.random.choice(("reaper", "Studio One", "Cubase12")))
        self.counts["sessions"] += 1

    def new_name(self, kind):
        self.names += 1
        return f"{kind} {self.names}"

    def mix(self):
        place = self.random.choice((self.song, self.song / "Mixes/Old", self.always_watched))
        return place / f"{self.new_name('Mix')}.{self.random.choice(EXTENSIONS)}"

    def expect(self, path):
        self.pending[path.name] = path
        self.litter.append(path)
        self.counts["bounces"] += 1

    def start_bounce(self, path, size=None):
        self.expect(path)
        self.daw.start_bounce(path, size or self.random.choice(SIZES),
                              portions=self.random.randint(1, 6), milliseconds=80)

    def question(self):
        """Returns the open prompt and the file that it asks about."""
        prompt = self.connect.prompt("\nfrom ")
        text = next(text for text in prompt.texts() if "\nfrom " in text)
        path = self.pending.pop(text.split("\n")[0], None)
        assert path, f"a second or unexpected prompt: {text}"
        self.counts["prompts"] += 1
        return prompt, path

    def answer_queue(self):
        """Answers one by one, up to the prompt that offers Add All; the rest is added or dropped together."""
        while True:
            prompt, path = self.question()
            together = next((title for title in prompt.buttons() if title.startswith("Add All")), None)
            if not together:
                answer = self.random.choice(("Add", "Skip"))
                prompt.answer(answer)
                if answer == "Add":
                    self.expect_copy(path)
                if not self.pending:
                    return
                continue
            others = list(self.pending.values())
            self.pending.clear()
            if self.random.random() < 0.3:
                prompt.answer("Cancel")
                self.counts["dropped"] += len(others)
                return
            assert together == f"Add All ({len(others) + 1})", f"{together} of {len(others) + 1}"
            prompt.answer(together)
            self.counts["taken along"] += len(others)
            for each in (path, *others):
                self.expect_copy(each)
            return

    def expect_copy(self, path, folder=None):
        """Waits for a copy, which must be whole as soon as it appears. Removes the copy."""
        copy = (folder or self.clients[0]) / path.name
        wait_for(f"the copy of {path.name}", copy.exists)
        assert filecmp.cmp(path, copy, shallow=False), f"{copy} differs from {path}"
        copy.unlink()
        self.counts["copies"] += 1


def remove(path):
    if path.is_dir():
        shutil.rmtree(path)
    else:
        path.unlink(missing_ok=True)


def session_file(song):
    return song / f"{song.name}.rpp"
