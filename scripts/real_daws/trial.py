"""Tests how the program reacts to a session and to exports, by observing both from outside."""

import filecmp
import os
import time
from pathlib import Path

from virtual_desktop import StemvaultConnect, TimedOut, wait_for

PROGRAM = Path("/usr/bin/stemvault-connect")
PROMPT, REPLACE = "Bounce detected", "Replace existing file?"
# Longer than from an export's end to its prompt, so that a second prompt would be noticed.
REST = 8.0
POLL = 45.0  # The program scans all DAWs at least every 30 s.
LONGEST = 300.0  # Seconds that an export may take.
STARTING = 120.0


class Trial:
    def __init__(self, desktop, **settings):
        self.desktop = desktop
        self.client = desktop.home / "Stemvault/Client A"
        self.client.mkdir(parents=True, exist_ok=True)
        self.connect = StemvaultConnect(desktop, PROGRAM, folders=[self.client], **settings)
        wait_for("the program", lambda: desktop.has_bus_name("net.stemvault.Connect"), 30)

    def session(self, program, how, session_file, *processes, expected=True, on=""):
        """Returns a row of the table of sessions. The time is measured from the appearance of a window
        with the session's name. With expected=None, the row only documents what was observed."""
        name, folder = session_file.stem, session_file.parent
        wait_for(f"a window of {name}", lambda: any(
            name in title for title in self.desktop.display.windows().values()), STARTING)
        shown = time.monotonic()
        try:
            wait_for("the session", lambda: self.connect.watches(folder), POLL)
            seconds = time.monotonic() - shown
        except TimedOut:
            seconds = None
        row = {"program": program, "how": how, "on": on, "seconds": seconds,
               "holds": held_below(processes, folder), "expected": expected}
        assert expected in (None, seconds is not None), f"{program}, {how}: {row}"
        return row

    def export(self, program, title, path, run, is_over, on_disk="", expected=1):
        """Runs an export and answers each prompt about it at once. Returns a row."""
        before = time.time()
        run()
        asked, quiet_since, is_done = [], before, False
        while not is_done or time.time() - quiet_since < REST:
            if time.time() - before > LONGEST:
                raise TimedOut(f"{title} did not end in {LONGEST:g} s")
            if not is_done and is_over():
                is_done, quiet_since = True, time.time()
            if self.answer(path):
                asked.append(state_of(path))
                quiet_since = time.time()
            time.sleep(0.02)
        copy = self.client / path.name
        final = state_of(path)
        assert final["content"], f"{title} wrote nothing"
        whole = copy.exists() and filecmp.cmp(path, copy, shallow=False)
        return {"program": program, "export": title, "on_disk": on_disk, "asked": len(asked),
                "early": sum(1 for each in asked if each["content"] != final["content"]),
                "after": asked[-1]["at"] - final["modified"] if asked else None,
                "took": final["modified"] - before, "expected": expected,
                "copy": "identical" if whole else "differs" if copy.exists() else "none"}

    def answer(self, path):
        """Answers an open prompt with Add, or with Skip for other files; returns whether it was this file."""
        windows = self.desktop.accessibility
        if replace := windows.find_window(REPLACE):
            replace.answer("Replace")
        prompt = windows.find_window(PROMPT)
        if not prompt:
            return False
        is_this = any(path.name in line for line in prompt.texts())
        prompt.answer("Add" if is_this else "Skip")
        return is_this


def state_of(path):
    try:
        state = os.stat(path)
    except OSError:
        return {"at": time.time(), "content": None, "modified": 0}
    return {"at": time.time(), "content": (state.st_size, state.st_mtime_ns),
            "modified": state.st_mtime}


def open_files(pid):
    """The open files of a process, as (path, whether it may write)."""
    found = []
    for entry in Path(f"/proc/{pid}/fd").iterdir():
        try:
            flags = next(line.split()[1] for line in
                         Path(f"/proc/{pid}/fdinfo/{entry.name}").read_text().splitlines()
                         if line.startswith("flags"))
            found.append((os.readlink(entry), bool(int(flags, 8) & os.O_ACCMODE)))
        except (OSError, StopIteration):
            pass
    return found


def held_below(pids, folder):
    """The files below a session's folder that these processes have open, as relative paths."""
    names = {os.path.relpath(path, folder) for pid in pids for path, _ in open_files(pid)
             if path.startswith(f"{folder}/")}
    return sorted(names)
