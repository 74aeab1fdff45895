"""Audacity, controlled through its own scripting pipe."""

import os
import shutil
import subprocess
from datetime import datetime, timezone
from pathlib import Path

from virtual_desktop import wait_for

from .trial import STARTING, Trial

PACKAGES = ("audacity",)
MODULE = Path("/usr/lib/audacity/modules/mod-script-pipe.so")
FIRST_CONFIGURATION = """NewPrefsInitialized=1
PrefsVersion=1.1.1r1
[Version]
Major=3
Minor=2
Micro=4
[GUI]
ShowSplashScreen=0
[GUI/Help]
WelcomeShown=1
"""
PIPE_CONFIGURATION = """[Module]
mod-script-pipe=1
[ModulePath]
mod-script-pipe={module}
[ModuleDateTime]
mod-script-pipe={date}
"""


def audacity(desktop, rows):
    songs = [desktop.home / f"Sessions/{name}/{name}.aup3" for name in ("First Song", "Next Song")]
    make_projects(desktop, songs)
    trial = Trial(desktop)
    program = Audacity(desktop, songs[0])
    rows["sessions"].append(trial.session("Audacity", "started", songs[0], program.pid))
    for ending in ("wav", "flac", "mp3"):
        path = songs[0].parent / f"Mix.{ending}"
        rows["exports"].append(trial.export(
            "Audacity", f"Export2 to {ending}", path,
            lambda path=path: program.do(f'Export2: Filename="{path}" NumChannels=1'), lambda: True))
    desktop.open_by_dialog(songs[0].stem, "Select", songs[1])
    rows["sessions"].append(trial.session("Audacity", "another one opened", songs[1], program.pid))


def make_projects(desktop, songs):
    """Audacity creates the first project. The other is a copy."""
    tone = desktop.folder / "tone.wav"
    subprocess.run(["sox", "-n", tone, "synth", "20", "sine", "440"], check=True)
    for song in songs:
        song.parent.mkdir(parents=True)
    look_for_plug_ins(desktop)
    program = Audacity(desktop)
    program.do(f'Import2: Filename="{tone}"')
    program.do(f'SaveProject2: Filename="{songs[0]}"')
    quit_by_key(desktop, program.process, songs[0].stem)
    shutil.copy(songs[0], songs[1])


def look_for_plug_ins(desktop):
    """Does what a first start does. Its helper process would also listen to the scripting pipe, so the
    pipe is switched on afterwards."""
    configuration = desktop.home / ".config/audacity/audacity.cfg"
    configuration.parent.mkdir(parents=True)
    configuration.write_text(FIRST_CONFIGURATION)
    program = desktop.start_audio("audacity", ["audacity"])
    wait_for("Audacity's first window", lambda: window_of(desktop, "Audacity"), STARTING)
    quit_by_key(desktop, program, "Audacity")
    date = datetime.fromtimestamp(MODULE.stat().st_mtime, timezone.utc)
    configuration.write_text(FIRST_CONFIGURATION + PIPE_CONFIGURATION.format(
        module=MODULE, date=date.strftime("%Y-%m-%dT%H:%M:%S")))


class Audacity:
    def __init__(self, desktop, *arguments):
        self.process = desktop.start_audio("audacity", ["audacity", *arguments])
        self.pid = self.process.pid
        title = Path(arguments[0]).stem if arguments else "Audacity"
        wait_for("Audacity's window", lambda: window_of(desktop, title), STARTING)
        ways = [f"/tmp/audacity_script_pipe.{way}.{os.getuid()}" for way in ("to", "from")]
        self.to, self.answers = open(ways[0], "w"), open(ways[1])

    def do(self, command):
        self.to.write(command + "\n")
        self.to.flush()
        said = []

        def has_finished():
            said.append(self.answers.readline())
            return "finished:" in said[-1]
        wait_for(f"Audacity to finish {command}", has_finished, STARTING)
        assert "finished: OK" in said[-1], f"{command}: {said}"


def quit_by_key(desktop, process, title):
    """After any other end, Audacity offers a recovery at the next start."""
    desktop.display.activate(wait_for("the window", lambda: window_of(desktop, title)))
    desktop.display.press_keys("Control_L", "q")
    process.wait(timeout=30)


def window_of(desktop, title):
    return next((window for window, its_title in desktop.display.windows().items()
                 if its_title == title), None)


TRIALS = (audacity,)
