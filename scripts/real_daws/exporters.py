"""Command line programs that write audio as exporters do, into the always-watched folder."""

import subprocess
import time

from .trial import Trial

PACKAGES = ("sox", "ffmpeg")
QUIET = ["ffmpeg", "-nostdin", "-loglevel", "error"]
TONE = ["-f", "lavfi", "-i", "sine=frequency=440:duration=30"]
PAUSE, PORTIONS = 3.0, 4
SECOND_OF_SILENCE = bytes(44100 * 2)


def at_full_speed(desktop, rows):
    bounces, trial = start(desktop)

    def run(title, name, command, on_disk="written in one go, closed"):
        process = []
        rows["exports"].append(trial.export(
            command[0], title, bounces / name, lambda: process.append(desktop.start(name, command)),
            lambda: process[0].poll() is not None, on_disk))
    run("30 s to wav", "Sox.wav", ["sox", "-n", bounces / "Sox.wav", "synth", "30", "sine", "440"])
    for name in ("Mix.wav", "Mix.flac", "Mix.mp3", "Mix.m4a"):
        run(f"30 s to {name[4:]}", name, [*QUIET, *TONE, bounces / name])
    run("30 s to mov, faststart", "Mix.mov",
        [*QUIET, *TONE, "-c:a", "aac", "-movflags", "+faststart", bounces / "Mix.mov"],
        "written, then moved up by the length of its index")


def slowly(desktop, rows):
    """Exports with pauses in the input: the files grow every three seconds and stay open throughout."""
    bounces, trial = start(desktop)
    for ending in ("wav", "mp3"):
        path = bounces / f"Slow.{ending}"
        feed = Feed(desktop, path)
        rows["exports"].append(trial.export(
            "ffmpeg", f"to {ending}, fed with pauses of {PAUSE:g} s", path, feed.start, feed.is_over,
            "open all along, written every 3 s"))


class Feed:
    """Gives ffmpeg a second of sound at a time."""

    def __init__(self, desktop, path):
        self.desktop, self.path, self.given = desktop, path, 0

    def start(self):
        command = ["ffmpeg", "-loglevel", "error", "-f", "s16le", "-ar", "44100", "-ac", "1", "-i", "-",
                   "-flush_packets", "1", self.path]
        self.process = self.desktop.start(self.path.name, command, stdin=subprocess.PIPE)
        self.next = time.monotonic()

    def is_over(self):
        if self.given < PORTIONS and time.monotonic() >= self.next:
            self.process.stdin.write(SECOND_OF_SILENCE)
            self.process.stdin.flush()
            self.given += 1
            self.next = time.monotonic() + PAUSE
        elif self.given == PORTIONS and time.monotonic() >= self.next \
                and not self.process.stdin.closed:
            self.process.stdin.close()
        return self.process.poll() is not None


def start(desktop):
    bounces = desktop.home / "Bounces"
    bounces.mkdir(parents=True)
    return bounces, Trial(desktop, always_watch=bounces)


TRIALS = (at_full_speed, slowly)
