"""Stemvault Connect under observation: its settings, its process, its prompts."""

import itertools
import json
import os
import re
import signal
import time
import uuid
from pathlib import Path

from .waiting import wait_for

NEW_FOLDER = "New Folder…"
BUS_NAME = "net.stemvault.Connect"
LARGEST_HEAP = 64 * 2**20  # Except the main one.


class StemvaultConnect:
    def __init__(self, desktop, program, folders=(), always_watch=None, projects_root=None,
                 is_running=True, is_update_due=False, privileged=False):
        """Starts the program with destination folders, each named like its directory. Unless
        `is_update_due`, today's check for updates counts as done.
        """
        self.desktop, self.program, self.privileged = desktop, program, privileged
        self.settings_file = desktop.home / ".config/stemvault/connect.json"
        record = {"stemvaultFolders": [
            {"id": str(uuid.uuid4()).upper(), "name": Path(folder).name, "path": str(folder)}
            for folder in folders]}
        record |= {"alwaysWatchPath": str(always_watch)} if always_watch else {}
        record |= {"projectsRootPath": str(projects_root)} if projects_root else {}
        self._write_settings(record, is_update_due)
        self.process = self.start() if is_running else None
        if always_watch and is_running:
            self.wait_until_it_watches(always_watch)

    def start(self, name="stemvault-connect", **options):
        return self.desktop.start(name, [self.program], privileged=self.privileged, **options)

    def start_again(self, environment=None):
        """Starts a second instance, as a user does, once the first one is on the bus."""
        wait_for("the program's name on the bus", lambda: self.desktop.has_bus_name(BUS_NAME))
        return self.start("again", environment=environment).wait(timeout=10)

    def settings(self):
        """The settings record on disk."""
        return json.loads(json.loads(self.settings_file.read_text())["settingsStore_v1"]["data"])

    def prompt(self, text=""):
        """Waits for an open prompt that contains the text."""
        def asked():
            window = self.desktop.accessibility.find_window("Bounce detected")
            return window if window and any(text in line for line in window.texts()) else None
        return wait_for(f'a prompt about "{text}"', asked)

    def window(self, name):
        return self.desktop.accessibility.window(name)

    def watches(self, folder):
        """Whether the kernel reports changes in a folder to the program."""
        inode = f" ino:{os.stat(folder).st_ino:x} "
        return any(inode in line for line in self._inotify_watches())

    def wait_until_it_watches(self, folder):
        wait_for(f"{folder} to be watched", lambda: self.watches(folder))

    def wait_until_it_leaves(self, folder):
        wait_for(f"{folder} to be watched no more", lambda: not self.watches(folder))

    def wait_until_it_rests(self):
        """Waits until every pending file has settled: until then the program wakes twice a second."""
        seen = {}

        def rests():
            since = seen.setdefault(self._wake_ups(), time.monotonic())
            return time.monotonic() - since > 1.2
        wait_for("the program to come to rest", rests)

    def open_files(self):
        """The targets of its descriptors."""
        return self._of_each_descriptor("fd", os.readlink)

    def replaces_allocator(self):
        """Whether this is a build with a sanitizer, which reserves terabytes of addresses."""
        ends = (line.split()[0].split("-") for line in self._maps())
        return any(int(end, 16) - int(begin, 16) >= 2**40 for begin, end in ends)

    def heaps_of_threads(self):
        """The number of heaps besides the main one. Each reserves 64 MiB of addresses, aligned to
        64 MiB, and only the beginning of them is writable.
        """
        maps = [re.match("([0-9a-f]+)-([0-9a-f]+) (....)", line).groups() for line in self._maps()]
        return sum(1 for (begin, _, rights), (_, end, rest) in itertools.pairwise(maps)
                   if (rights, rest) == ("rw-p", "---p") and int(begin, 16) % LARGEST_HEAP == 0
                   and int(end, 16) - int(begin, 16) == LARGEST_HEAP)

    def _maps(self):
        return Path(f"/proc/{self.process.pid}/maps").read_text().splitlines()

    def quit(self):
        """Asks the program to quit, and returns its exit status."""
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(timeout=10)

    def _wake_ups(self):
        status = Path(f"/proc/{self.process.pid}/status").read_text()
        return next(line for line in status.splitlines() if line.startswith("voluntary_ctxt"))

    def _inotify_watches(self):
        texts = self._of_each_descriptor("fdinfo", Path.read_text)
        return [line for text in texts for line in text.splitlines() if line.startswith("inotify")]

    def _of_each_descriptor(self, folder, read):
        found = []
        for entry in Path(f"/proc/{self.process.pid}/{folder}").iterdir():
            try:
                found.append(read(entry))
            except OSError:  # Closed meanwhile.
                pass
        return found

    def _write_settings(self, record, is_update_due):
        values = {"settingsStore_v1": {"data": json.dumps(record)}}
        if not is_update_due:
            now = time.strftime("%Y-%m-%dT%H:%M:%S.000Z", time.gmtime())
            values["updateChecker_lastCheckDate"] = {"date": now}
        self.settings_file.parent.mkdir(parents=True, exist_ok=True)
        self.settings_file.write_text(json.dumps(values))
