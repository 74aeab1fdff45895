"""Rosegarden, without sound: it asks for a MIDI sequencer of the kernel's otherwise."""

import shutil
from pathlib import Path

from .trial import Trial

PACKAGES = ("rosegarden",)


def rosegarden(desktop, rows):
    """One of its own examples, which it reads whole and closes."""
    song = desktop.home / "Sessions/First Song/First Song.rg"
    song.parent.mkdir(parents=True)
    example = next(Path("/usr/share/rosegarden/examples").glob("*.rg"))
    shutil.copy(example, song)
    trial = Trial(desktop)
    program = desktop.start_audio("rosegarden", ["rosegarden", "--nosplash", "--nosound", song])
    rows["sessions"].append(trial.session("Rosegarden", "started", song, program.pid, expected=False))


TRIALS = (rosegarden,)
