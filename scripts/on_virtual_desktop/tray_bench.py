"""Measures the time from the start of a tray program to its item in the tray, and its cost at rest.

    tray_bench.py PROGRAMS

The programs are started repeatedly, one after the other, on the same virtual desktop, with a home folder
that they have used before. Prints the medians as Markdown; programs that are not installed are omitted.
"""

import shutil
import statistics
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import Tray, VirtualDesktop, live_alone, wait_for  # noqa: E402

ROUNDS = 9
OTHERS = ("flameshot", "copyq", "keepassxc", "syncthingtray")
ARGUMENTS = {"syncthingtray": ["--wait", "--single-instance"]}
SETTINGS = {  # They make the programs start in the tray without asking anything.
    "keepassxc/keepassxc.ini": "[General]\nUpdateCheckMessageShown=true\n"
                               "[GUI]\nShowTrayIcon=true\nMinimizeOnStartup=true\nMinimizeToTray=true\n",
    "syncthingtray.ini": "[General]\nv=1.3.2\n[tray]\nconnections\\size=1\n",
}


class Bench:
    def __init__(self, desktop, programs):
        self.desktop, self.tray = desktop, Tray(desktop).start()
        for name, text in SETTINGS.items():
            file = desktop.home / ".config" / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        self.commands = {"stemvault-connect": [programs / "stemvault-connect"],
                         "empty tray program": [programs / "empty-tray"]}
        for name in OTHERS:
            if path := shutil.which(name):
                self.commands[name] = [path, *ARGUMENTS.get(name, [])]

    def start(self, name):
        """Returns the process, once its item is registered, and the milliseconds until then."""
        begin = time.monotonic()
        process = self.desktop.start(name.replace(" ", "-"), self.commands[name])
        wait_for(f"the tray item of {name}", self.tray.has_item, 20)
        return process, (time.monotonic() - begin) * 1000

    def end(self, process):
        process.terminate()
        process.wait(timeout=10)
        wait_for("an empty tray", lambda: not self.tray.has_item())

    def times(self, name):
        taken = []
        for _ in range(ROUNDS + 1):
            process, milliseconds = self.start(name)
            taken.append(milliseconds)
            self.end(process)
        return taken[1:]  # The first one fills the page cache.

    def at_rest(self, name):
        """Memory in MiB after ten seconds, threads, and wake-ups in the thirty seconds after."""
        process, _ = self.start(name)
        time.sleep(10)
        memory = pss(process.pid)
        before = wake_ups(process.pid)
        time.sleep(30)
        found = memory, len(list(Path(f"/proc/{process.pid}/task").iterdir())), wake_ups(process.pid) - before
        self.end(process)
        return found


def pss(pid):
    lines = Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith("Pss:")) / 1024


def wake_ups(pid):
    """The number of context switches of all its threads."""
    total = 0
    for task in Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if "ctxt_switches" in line:
                total += int(line.split()[1])
    return total


def main():
    live_alone()
    print("| program | start to tray item | memory (PSS) | threads | wake-ups in 30 s |")
    print("| --- | ---: | ---: | ---: | ---: |")
    with VirtualDesktop(notifications="body") as desktop:
        bench = Bench(desktop, Path(sys.argv[1]).resolve())
        for name in bench.commands:
            try:
                milliseconds = statistics.median(bench.times(name))
                memory, threads, woken = bench.at_rest(name)
            except AssertionError as failure:
                print(f"| {name} | {failure} | | | |")
                continue
            print(f"| {name} | {milliseconds:.0f} ms | {memory:.1f} MiB | {threads} | {woken} |", flush=True)


main()
