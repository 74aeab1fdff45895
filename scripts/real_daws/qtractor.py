"""Qtractor, with JACK's dummy engine, which needs no sound card."""

import subprocess
from pathlib import Path

from virtual_desktop import wait_for

from .trial import Trial

PACKAGES = ("qtractor",)
SEQUENCER = Path("/dev/snd/seq")
SESSION = """<!DOCTYPE qtractorSession>
<session name="{name}" version="0.9.31">
 <properties>
  <directory>{folder}</directory>
  <sample-rate>48000</sample-rate>
  <tempo>120</tempo>
  <ticks-per-beat>960</ticks-per-beat>
  <beats-per-bar>4</beats-per-bar>
  <beat-divisor>2</beat-divisor>
 </properties>
 <tracks>
  <track type="audio" name="Voice">
   <properties/>
   <clips>
    <clip name="Take 1">
     <properties><start>0</start><offset>0</offset><length>960000</length></properties>
     <audio-clip><filename>{media}</filename></audio-clip>
    </clip>
   </clips>
  </track>
 </tracks>
</session>
"""


def qtractor(desktop, rows):
    if not SEQUENCER.exists():
        rows["untried"].append(
            "Qtractor opens no session without the kernel's MIDI sequencer (`/dev/snd/seq`).")
        return
    songs = [make_session(desktop.home / "Sessions" / name) for name in ("First Song", "Next Song")]
    desktop.start_audio("jack", ["jackd", "--no-realtime", "-d", "dummy", "-r", "48000"])
    wait_for("JACK", lambda: "JACK server starting" in desktop.log("jack"))
    trial = Trial(desktop)
    program = desktop.start_audio("qtractor", ["qtractor", songs[0]])
    rows["sessions"].append(trial.session("Qtractor", "started", songs[0], program.pid))


def make_session(folder):
    folder.mkdir(parents=True)
    media = folder / "Take 1.wav"
    subprocess.run(["sox", "-n", "-r", "48000", media, "synth", "20", "sine", "440"], check=True)
    session = folder / f"{folder.name}.qtr"
    session.write_text(SESSION.format(name=folder.name, folder=folder, media=media))
    return session


TRIALS = (qtractor,)
