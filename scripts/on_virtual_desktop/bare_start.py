"""Starts the program installed in another system on a virtual desktop of this system, and lets it copy a
bounce. The program sees only the other system's folder, with that system's libraries, fonts and tools.

    bare_start.py ROOT PICTURE

ROOT is the other system's folder; the same path is valid inside it, too.
"""

import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import StemvaultConnect, VirtualDesktop, live_alone, wait_for  # noqa: E402


def main():
    live_alone()
    root, picture = (Path(argument) for argument in sys.argv[1:])
    # The other system shares our processes, and /tmp for the sockets.
    for what in (["-t", "proc", "proc", root / "proc"], ["--bind", "/tmp", root / "tmp"]):
        subprocess.run(["mount", *what], check=True)
    with VirtualDesktop() as desktop:
        desktop.live_in(root / "home/engineer")
        bounces, client = desktop.home / "Bounces", desktop.home / "Client A"
        for folder in (bounces, client):
            folder.mkdir(parents=True)
        program = desktop.made_folder("bin") / "stemvault-connect"
        program.write_text(f'#!/bin/sh\nexec chroot "{root}" /usr/bin/stemvault-connect\n')
        program.chmod(0o755)
        connect = StemvaultConnect(desktop, program, folders=[client], always_watch=bounces)
        (bounces / "Mix.wav").write_bytes(b"RIFF")
        prompt = connect.prompt("Mix.wav")
        prompt.focus()

        def is_drawn():  # The picture of an empty window compresses to a small file.
            desktop.display.take_picture(picture, prompt.id())
            return picture.stat().st_size > 6_000
        wait_for("the prompt to be drawn", is_drawn)
        prompt.answer("Add")
        desktop.wait_for_notification("Mix.wav → Client A")
        if connect.quit() != 0 or (client / "Mix.wav").read_bytes() != b"RIFF":
            raise AssertionError(desktop.log("stemvault-connect"))


main()
