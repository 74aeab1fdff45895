"""LMMS, which renders by its own command line."""

import subprocess

from .trial import Trial

PACKAGES = ("lmms",)
CONFIGURATION = """<?xml version="1.0"?>
<!DOCTYPE lmms-config-file>
<lmms version="1.2.2" configversion="2">
  <app configured="1" openlastproject="0"/>
  <mixer audiodev="Dummy (no sound output)" mididev="Dummy (no MIDI support)"/>
</lmms>
"""
PROJECT = """<?xml version="1.0"?>
<!DOCTYPE lmms-project>
<lmms-project version="1.0" type="song" creator="LMMS" creatorversion="1.2.2">
  <head timesig_numerator="4" timesig_denominator="4" bpm="60" mastervol="100" masterpitch="0"/>
  <song>
    <trackcontainer type="song" visible="1">
      <track type="2" name="Voice" muted="0" solo="0">
        <sampletrack vol="100" pan="0"><fxchain numofeffects="0" enabled="0"/></sampletrack>
        <sampletco src="{sample}" pos="0" len="768" muted="0"/>
      </track>
    </trackcontainer>
  </song>
</lmms-project>
"""


def lmms(desktop, rows):
    (desktop.home / ".lmmsrc.xml").write_text(CONFIGURATION)
    song = make_project(desktop.home / "Sessions/First Song")
    trial = Trial(desktop, always_watch=song.parent)
    for ending in ("wav", "mp3", "ogg"):
        path, renderer = song.parent / f"Mix.{ending}", []
        rows["exports"].append(trial.export(
            "LMMS", f"lmms render to {ending}", path,
            lambda: renderer.append(desktop.start_audio(
                "render", ["lmms", "render", song, "-o", path, "-f", ending])),
            lambda: renderer[0].poll() is not None, expected=0 if ending == "ogg" else 1))


def lmms_with_a_window(desktop, rows):
    """LMMS reads the project and its samples completely, and closes them."""
    (desktop.home / ".lmmsrc.xml").write_text(CONFIGURATION)
    song = make_project(desktop.home / "Sessions/First Song")
    trial = Trial(desktop)
    program = desktop.start_audio("lmms", ["lmms", song])
    rows["sessions"].append(trial.session("LMMS", "started", song, program.pid, expected=False))


def make_project(folder):
    folder.mkdir(parents=True)
    sample = folder / "Voice.wav"
    subprocess.run(["sox", "-n", sample, "synth", "8", "sine", "440"], check=True)
    project = folder / f"{folder.name}.mmp"
    project.write_text(PROJECT.format(sample=sample))
    return project


TRIALS = (lmms, lmms_with_a_window)
