"""Measures the whole program: the time until it is ready, and its cost at rest.

    program_bench.py PROGRAMS

PROGRAMS is the folder of the built programs. Prints rows of Markdown.
"""

import os
import statistics
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import StandInDaw, StemvaultConnect, VirtualDesktop, live_alone  # noqa: E402

ROUNDS = 21
DIRECTORIES = 10_000
# Seconds: idle worker threads end within SETTLING; the program is observed for OBSERVED.
SETTLING, OBSERVED = 37.0, 20.0


def watches(pid, inode):
    """Whether a process has an inotify watch on an inode; cheap enough to call in a loop."""
    try:
        for entry in os.scandir(f"/proc/{pid}/fdinfo"):
            with open(entry.path, "rb") as info:
                if inode in info.read():
                    return True
    except OSError:  # The process is not there yet, or a descriptor was closed meanwhile.
        pass
    return False


def milliseconds_until_ready(desktop, command, folder):
    """The time from the start until the event loop has run and the kernel reports on the folder."""
    inode = f" ino:{os.stat(folder).st_ino:x} ".encode()
    begin = time.perf_counter()
    process = subprocess.Popen(command, env=desktop.environment, cwd=desktop.home)
    while not watches(process.pid, inode):
        if time.perf_counter() - begin > 10:
            raise RuntimeError(f"{command[0]} was not ready within 10 s")
    elapsed = (time.perf_counter() - begin) * 1000
    process.terminate()
    process.wait()
    return elapsed


def start_rows(programs):
    with VirtualDesktop() as desktop:
        folder = desktop.made_folder("home/Mixes")
        settings = StemvaultConnect(desktop, programs / "stemvault-connect", [folder], folder)
        settings.quit()
        del desktop.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]
        commands = {
            "an empty Qt Widgets program": [programs / "stemvault-empty-program", folder],
            "Stemvault Connect": [programs / "stemvault-connect"],
        }
        times = {name: [] for name in commands}
        for _ in range(ROUNDS):
            for name, command in commands.items():
                times[name].append(milliseconds_until_ready(desktop, command, folder))
    print("| start until ready, warm | median | fastest |")
    print("| --- | ---: | ---: |")
    for name, taken in times.items():
        print(f"| {name} | {statistics.median(taken):.0f} ms | {min(taken):.0f} ms |")


def threads(pid):
    return [Path(f"/proc/{pid}/task/{task}") for task in os.listdir(f"/proc/{pid}/task")]


def field(path, name):
    lines = path.read_text().splitlines()
    return int(next(line for line in lines if line.startswith(name)).split()[1])


def wake_ups(pid):
    return sum(field(task / "status", "voluntary_ctxt_switches") for task in threads(pid))


def cpu_ticks(pid):
    fields = Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return int(fields[11]) + int(fields[12])


def idle_rows(programs):
    with VirtualDesktop() as desktop:
        song = desktop.made_folder("home/Sessions/Big Song")
        for number in range(DIRECTORIES):
            (song / f"{number % 100}" / f"{number}").mkdir(parents=True)
        session_file = song / "Big Song.rpp"
        session_file.write_text("<REAPER_PROJECT>\n")
        del desktop.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"]
        StandInDaw(desktop, programs / "stand-in-daw", session_file)
        connect = StemvaultConnect(desktop, programs / "stemvault-connect", [song])
        connect.wait_until_it_watches(song / "99" / f"{DIRECTORIES - 1}")
        pid = connect.process.pid
        # The observation starts right after a poll, so that it contains none.
        time.sleep(SETTLING)
        before, ticks = wake_ups(pid), cpu_ticks(pid)
        time.sleep(OBSERVED)
        print(f"\n| at rest, a session of {DIRECTORIES:,} folders open | |")
        print("| --- | ---: |")
        print(f"| wake-ups in {OBSERVED:.0f} s between two polls | {wake_ups(pid) - before} |")
        print(f"| processor time in them | {(cpu_ticks(pid) - ticks) * 10} ms |")
        print(f"| threads | {len(threads(pid))} |")
        memory = field(Path(f"/proc/{pid}/smaps_rollup"), "Pss:")
        print(f"| proportional memory | {memory / 1024:.1f} MiB |")
        connect.quit()


def main():
    live_alone()
    programs = Path(sys.argv[1]).resolve()
    start_rows(programs)
    idle_rows(programs)


main()
