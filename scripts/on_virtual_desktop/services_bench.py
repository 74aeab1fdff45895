"""Measures the time from a file manager's start of the Courier with 1,000 selected files until the prompt is
on the screen. Prints the median of seven rounds on the virtual desktop as Markdown.

    services_bench.py PROGRAMS
"""

import statistics
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import StemvaultConnect, VirtualDesktop, live_alone  # noqa: E402
from virtual_desktop.services import Services, StartedByBus  # noqa: E402

ROUNDS = 7


def until_prompt(desktop, services, connect, files):
    """The seconds until the prompt's window is on the screen. Cancels the prompt afterwards."""
    begin = time.monotonic()
    courier = services.run("add", *files)
    while "Bounce detected" not in " ".join(desktop.display.windows().values()):
        time.sleep(0.001)
    seconds = time.monotonic() - begin
    connect.prompt("+ 999 more waiting").answer("Cancel")
    assert courier.wait(timeout=10) == 0
    return seconds


def rounds(programs, is_running):
    taken = []
    for _ in range(ROUNDS):
        with VirtualDesktop() as desktop:
            services = Services(desktop, programs)
            song = desktop.made_folder("home/Song")
            files = [song / f"Take {number}.wav" for number in range(1000)]
            for file in files:
                file.write_bytes(b"RIFF")
            folder = desktop.made_folder("home/Client A")
            bounces = desktop.made_folder("home/Bounces")
            connect = StemvaultConnect(desktop, programs / "stemvault-connect", folders=[folder],
                                       always_watch=bounces if is_running else None,
                                       is_running=is_running)
            taken.append(until_prompt(desktop, services, connect, files))
            if not is_running:
                connect.process = StartedByBus(desktop)
            connect.quit()
    return statistics.median(taken)


def main():
    live_alone()
    programs = Path(sys.argv[1]).resolve()
    print("| 1,000 selected files | from the Courier's start to the prompt |\n| --- | ---: |")
    print(f"| the program is running | {rounds(programs, True) * 1000:.0f} ms |")
    print(f"| the bus has to start it | {rounds(programs, False) * 1000:.0f} ms |")


main()
