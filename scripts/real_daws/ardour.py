"""Ardour: its own Lua interpreter records the sessions, and its export command exports them."""

import shutil
from pathlib import Path

from virtual_desktop import wait_for

from .trial import STARTING, Trial

PACKAGES = ("ardour",)
INSTALLED = Path("/usr/lib/ardour7")
CONFIGURATION = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><Config><Option name="hide-dummy-backend" value="0"/></Config></Ardour>
"""
# The dummy engine, which needs no sound card, supplies the sound.
RECORDING = """
local backend = AudioEngine:set_backend("None (Dummy)", "", "")
backend:set_device_name("Uniform White Noise")
local session = create_session("{folder}", "{name}", 48000)
local tracks = session:new_audio_track(
    1, 2, nil, 1, "Voice", ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true)
for track in tracks:iter() do
    track:to_track():rec_enable_control():set_value(1, PBD.GroupControlDisposition.NoGroup)
end
session:maybe_enable_record(false)
session:request_roll(ARDOUR.TransportRequestSource.TRS_UI)
sleep(5)
session:request_stop(false, false, ARDOUR.TransportRequestSource.TRS_UI)
sleep(1)
session:save_state("")
close_session()
"""


def ardour(desktop, rows):
    songs = [record(desktop, name) for name in ("First Song", "Next Song")]
    trial = Trial(desktop)
    program = start(desktop, songs[0])
    rows["sessions"].append(trial.session("Ardour", "started", songs[0], program.pid))
    for title, options in (("plain", []), ("normalised", ["-n"])):
        path, exporter = songs[0].parent / f"export/{title}.wav", []
        rows["exports"].append(trial.export(
            "Ardour", f"ardour7-export, {title}", path,
            lambda: exporter.append(desktop.start_audio("export", [
                "ardour7-export", *options, "-o", path, songs[0].parent, songs[0].stem])),
            lambda: exporter[0].poll() is not None))
    desktop.open_by_dialog(" - Ardour", "Open Session", songs[1])
    rows["sessions"].append(trial.session("Ardour", "another one opened", songs[1], program.pid))


def record(desktop, name):
    """A session with one take of noise."""
    folder = desktop.home / "Sessions" / name
    folder.parent.mkdir(parents=True, exist_ok=True)
    script = desktop.folder / "record.lua"
    script.write_text(RECORDING.format(folder=folder, name=name))
    recorder = desktop.start_audio("recorder", ["ardour7-lua", script])
    wait_for("the recording", lambda: recorder.poll() is not None, STARTING)
    session = folder / f"{name}.ardour"
    # With any device but Ardour's default, Ardour first asks for its set-up.
    session.write_text(session.read_text().replace("Uniform White Noise", "Silence"))
    return session


def start(desktop, song):
    """Starts Ardour as its script does, but with only the dummy engine available. Its messages at the
    start are dismissed."""
    parts = desktop.made_folder("ardour")
    for part in INSTALLED.iterdir():
        if part.name != "backends":
            (parts / part.name).symlink_to(part)
    shutil.copy(INSTALLED / "backends/libdummy_audiobackend.so", desktop.made_folder("ardour/backends"))
    configuration = desktop.home / ".config/ardour7"
    configuration.mkdir(parents=True, exist_ok=True)
    (configuration / ".a7").touch()  # Suppresses the assistant of the first start.
    (configuration / "config").write_text(CONFIGURATION)
    program = desktop.start_audio("ardour", [next(INSTALLED.glob("ardour-7*")), song], {
        "ARDOUR_DATA_PATH": "/usr/share/ardour7", "ARDOUR_CONFIG_PATH": "/etc/ardour7",
        "ARDOUR_DLL_PATH": str(parts), "LD_LIBRARY_PATH": str(INSTALLED), "GTK_PATH": str(INSTALLED),
        "TRY_AUTOSTART_ENGINE": "1"})

    def is_open():
        assert program.poll() is None, "Ardour has ended: " + desktop.log("ardour")[-200:]
        question = desktop.window_with("")
        if question and desktop.display.active_window() == question:
            desktop.display.press_key("Return")
        return desktop.window_with(song.stem)
    wait_for("Ardour's window", is_open, STARTING)
    return program


TRIALS = (ardour,)
