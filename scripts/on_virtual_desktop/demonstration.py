"""Demonstrates a bounce step by step: the real program on a real desktop, without a screen.

    demonstration.py PROGRAMS PICTURES

PROGRAMS is the folder of the built programs, PICTURES the folder for a picture of the prompt.
"""

import filecmp
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import (  # noqa: E402
    StandInDaw, StemvaultConnect, TimedOut, Tray, UpdateFeed, VirtualDesktop, live_alone)


class Demonstration:
    def __init__(self, desktop, programs, pictures, begin):
        self.desktop, self.programs, self.pictures, self.begin = desktop, programs, pictures, begin

    def say(self, text):
        print(f"{time.monotonic() - self.begin:6.2f} s  {text}", flush=True)

    def take_picture(self, name):
        path = self.pictures / f"{name}.png"
        self.desktop.display.take_picture(path)
        self.say(f"    picture: {path}")

    def run(self):
        self.say("The virtual desktop is running.")
        folders = [self.desktop.made_folder(f"home/Stemvault/{name}")
                   for name in ("Client A", "Client B")]
        song = self.desktop.made_folder("home/Sessions/Big Song")
        session_file = song / "Big Song.rpp"
        session_file.write_text("<REAPER_PROJECT>\n")

        daw = StandInDaw(self.desktop, self.programs / "stand-in-daw", session_file)
        self.say(f"A stand-in DAW runs as {daw.name} (process {daw.process.pid})"
                 f" and has {session_file.name} open.")
        tray = Tray(self.desktop).start()
        feed = UpdateFeed(self.desktop, self.programs / "stemvault-connect")
        feed.publish("99.0", notes="Exists only in this demonstration.")
        connect = StemvaultConnect(self.desktop, feed.program, folders, is_update_due=True)
        self.say(f"Stemvault Connect runs (process {connect.process.pid}).")
        connect.window("Update Available").answer("Later")
        self.say("Its daily check for updates has found one; its question was answered with Later.")
        connect.wait_until_it_watches(song)
        self.say(f"It has found the session: the kernel now reports changes in {song.name} to it.")

        mix = song / "Mix.wav"
        daw.start_bounce(mix, size=6_000_000, portions=8, milliseconds=250)
        self.say("The DAW bounces Mix.wav, in eight portions.")
        prompt = connect.prompt("Mix.wav")
        if not daw.has_bounced(mix):
            raise AssertionError("the prompt came up before the bounce was complete")
        title, text = (" ".join(shown.split("\n")) for shown in prompt.texts())
        self.say(f'The bounce is complete, and the prompt is open: "{title}", "{text}",')
        self.say(f"    folders {', '.join(prompt.choices())}, buttons {', '.join(prompt.buttons())}.")
        prompt.focus()
        self.take_picture("prompt")
        prompt.choose("Client B")
        prompt.answer("Add")
        self.say("Client B was chosen and Add pressed.")
        note = self.desktop.wait_for_notification("Mix.wav → Client B")
        self.say(f'The notification has appeared: "{note["summary"]}", "{note["body"]}".')
        if not filecmp.cmp(mix, folders[1] / "Mix.wav", shallow=False):
            raise AssertionError("the copy differs from the bounce")
        self.say(f"Client B contains Mix.wav: {mix.stat().st_size} bytes, identical to the bounce.")

        self.show_menu(connect, tray.item())
        daw.quit()
        connect.wait_until_it_leaves(song)
        self.say("The DAW has quit, and its session is no longer watched.")
        status = connect.quit()
        if status != 0:
            raise AssertionError(f"the program ended with status {status}")
        self.say("Stemvault Connect was asked to quit and did so.")

    def show_menu(self, connect, item):
        session, added = (str(row.get("accessible-desc") or row["label"]) for row in item.open_menu()[:2])
        self.say(f'The menu in the tray reads "{session}" and "{added}".')
        item.choose("Preferences…")
        window = connect.window("Stemvault Connect")
        window.focus()
        self.take_picture("preferences")
        self.say(f"The preferences are open: {', '.join(window.texts()[2:6])}.")
        self.desktop.display.press_key("Escape")
        window.wait_until_closed()


def main():
    live_alone()
    programs, pictures = (Path(argument).resolve() for argument in sys.argv[1:])
    begin = time.monotonic()
    with VirtualDesktop() as desktop:
        try:
            Demonstration(desktop, programs, pictures, begin).run()
        except (AssertionError, TimedOut) as failure:
            desktop.keep_evidence(pictures / "failure")
            print(f"FAILED: {failure}. The evidence is in {pictures / 'failure'}", file=sys.stderr)
            return 1
    return 0


sys.exit(main())
