"""Rosegarden, without sound, since it would need the kernel's MIDI sequencer otherwise."""

import gzip

from .trial import Trial

PACKAGES = ("rosegarden",)
DOCUMENT = """<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE rosegarden-data>
<rosegarden-data version="22.12.1" format-version-major="1" format-version-minor="6"
                 format-version-point="9">
<composition recordtracks="" pointer="0" compositionDefaultTempo="12000000" startMarker="0"
             endMarker="384000" selected="0">
  <track id="0" label="Voice" position="0" muted="false" instrument="1000"/>
</composition>
</rosegarden-data>
"""


def rosegarden(desktop, rows):
    """Rosegarden reads a document and closes it: only a scan at that moment finds the session."""
    song = desktop.home / "Sessions/First Song/First Song.rg"
    song.parent.mkdir(parents=True)
    song.write_bytes(gzip.compress(DOCUMENT.encode()))
    trial = Trial(desktop)
    program = desktop.start_audio("rosegarden", ["rosegarden", "--nosplash", "--nosound", song])
    rows["sessions"].append(trial.session("Rosegarden", "started", song, program.pid, expected=None))


TRIALS = (rosegarden,)
