"""Stand-ins for Windows DAWs: a small program with their names (stand_in.c) under Debian's Wine.

It keeps open the files that the DAW is known to keep open, and writes as DAWs do. That the real DAWs do so
is known from documentation only.
"""

import shutil
import subprocess
from pathlib import Path

from virtual_desktop import wait_for

from .trial import STARTING, Trial

PACKAGES = ("wine",)
COMPILER = "x86_64-w64-mingw32-gcc"
# The DAW, its executable, the extension of its session files, and the audio file that it has open.
DAWS = (
    ("Pro Tools", "ProTools.exe", "ptx", "Audio Files/Take 1.wav"),
    ("Ableton Live 12", "Ableton Live 12 Suite.exe", "als", "Samples/Recorded/Take 1.wav"),
    ("Ableton Live 11", "Ableton Live 11 Suite.exe", "als", "Samples/Recorded/Take 1.wav"),
    ("Studio One", "Studio One.exe", "song", "Media/Take 1.wav"),
    ("Cubase 13", "Cubase13.exe", "cpr", "Audio/Take 1.wav"),
    ("Nuendo 13", "Nuendo13.exe", "npr", "Audio/Take 1.wav"),
    ("REAPER", "reaper.exe", "rpp", "Media/Take 1.wav"),
    ("FL Studio", "FL64.exe", "flp", "Recorded/Take 1.wav"),
)
# The ways of writing in stand_in.c, what happens on disk, and the expected number of prompts.
WRITE_PATTERNS = (
    ("at-once", "written in one go, closed", 1),
    ("paused", "written every 3 s, open all along", 1),
    ("held", "written in one go, closed 6 s later", 1),
    ("reserved", "given its full length first, filled 6 s later, open all along", 1),
    ("header-last", "written in one go, its header 6 s later, open all along", 1),
    ("reopened-fast", "closed and opened again every 0.3 s", 1),
    ("reopened", "closed and opened again every 3 s", None),
    ("renamed", "written as `.wav.tmp`, then renamed", 0),
    ("renamed-audio", "written as another `.wav`, then renamed", None),
)


def windows_daws(desktop, rows):
    prepare(desktop)
    trial = Trial(desktop)
    for daw in DAWS:
        try_daw(desktop, trial, rows, *daw)


def unread_session(desktop, rows):
    """A session file that is open but not read yet, which lsof lists under wineserver only."""
    prepare(desktop)
    trial = Trial(desktop)
    song = make_session(desktop, "Unread Song", "rpp", "Media/Take 1.wav")
    program = StandIn(desktop, "reaper.exe", song, song, order="open-unread")
    rows["sessions"].append(trial.session(
        "REAPER, stand-in, its session file open but not read", "", song, program.pid()))
    program.quit()


def exports(desktop, rows):
    """Exports do not depend on the name of the DAW, so one name is enough."""
    prepare(desktop)
    song = make_session(desktop, "Big Song", "rpp", "Media/Take 1.wav")
    trial = Trial(desktop)
    program = StandIn(desktop, "reaper.exe", song, song.parent / "Media/Take 1.wav")
    wait_for("the session", lambda: trial.connect.watches(song.parent), STARTING)
    for pattern, on_disk, expected in WRITE_PATTERNS:
        path = song.parent / f"{pattern}.wav"
        rows["exports"].append(trial.export(
            "stand-in for a Windows DAW", pattern.replace("-", " "), path,
            lambda: program.tell(f"export {pattern} {windows(path)}"), program.is_done,
            on_disk, expected))
    path = song.parent / "at-once.wav"
    rows["exports"].append(trial.export(
        "stand-in for a Windows DAW", "again, the same length", path,
        lambda: program.tell(f"export at-once {windows(path)}"), program.is_done,
        "written in one go, closed", 0))


def try_daw(desktop, trial, rows, name, executable, ending, media):
    """Opens a session by its session file, then two others by their audio only, as most DAWs do."""
    songs = [make_session(desktop, f"{name} {number}", ending, media) for number in ("One", "Two", "Six")]
    program = StandIn(desktop, executable, songs[0], songs[0])
    rows["sessions"].append(trial.session(f"{name}, stand-in", "its session file", songs[0], program.pid()))
    for song, how in zip(songs[1:], ("another one opened: its audio alone", "again another one")):
        program.show(song, song.parent / media)
        rows["sessions"].append(trial.session(f"{name}, stand-in", how, song, program.pid()))
    program.quit()


def prepare(desktop):
    """Compiles the stand-in, and creates the Wine prefix."""
    source = Path(__file__).with_name("stand_in.c")
    subprocess.run([COMPILER, "-O1", "-mwindows", "-o", desktop.folder / "stand_in.exe", source], check=True)
    desktop.environment |= {"WINEDEBUG": "-all", "WINEDLLOVERRIDES": "mscoree,mshtml=",
                            "WINEPREFIX": str(desktop.home / ".wine"), "WINEARCH": "win64"}
    boot = desktop.start_audio("wineboot", ["wineboot", "--init"])
    wait_for("Wine's drive", lambda: boot.poll() is not None, STARTING)


def make_session(desktop, name, ending, media):
    folder = desktop.home / "Sessions" / name
    (folder / media).parent.mkdir(parents=True)
    (folder / media).write_bytes(b"RIFF" + bytes(10_000))
    session = folder / f"{name}.{ending}"
    session.write_text("session")
    return session


def windows(path):
    return "Z:" + str(path).replace("/", "\\")


class StandIn:
    def __init__(self, desktop, executable, song, *files, order="open"):
        folder = desktop.home / ".wine/drive_c/Program Files" / Path(executable).stem
        folder.mkdir(parents=True, exist_ok=True)
        self.executable = folder / executable
        shutil.copy(desktop.folder / "stand_in.exe", self.executable)
        self.answers = desktop.logs / f"{executable}-answers.log"
        self.asked = 0
        with open(self.answers, "wb") as answers:
            self.process = desktop.start_audio(
                executable, ["wine", self.executable], stdin=subprocess.PIPE, stdout=answers)
        self.show(song, *files, order=order)

    def show(self, song, *files, order="open"):
        """Opens other files, then shows the session's name in the title."""
        self.do("close")
        for file in files:
            self.do(f"{order} {windows(file)}")
        self.do(f"title {song.stem} - {self.executable.stem}")

    def do(self, line):
        self.tell(line)
        wait_for(f"the stand-in's answer to {line}", self.is_done, STARTING)

    def tell(self, line):
        self.process.stdin.write(line.encode() + b"\r\n")
        self.process.stdin.flush()
        self.asked += 1

    def is_done(self):
        return self.answers.read_bytes().count(b"\n") >= self.asked

    def pid(self):
        """The process of the stand-in itself, which may not be the one that was started: Wine's loader may
        start another process for it."""
        return next(int(entry.name) for entry in Path("/proc").iterdir() if entry.name.isdigit()
                    and self.executable.name.encode() in (entry / "cmdline").read_bytes()
                    and b"start.exe" not in (entry / "cmdline").read_bytes()
                    and any("stand_in" in line or self.executable.name in line
                            for line in (entry / "maps").read_text(errors="replace").splitlines()))

    def quit(self):
        self.process.stdin.close()
        self.process.wait(timeout=30)


TRIALS = (windows_daws, unread_session, exports)
