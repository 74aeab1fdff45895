"""Exercises every feature of the program for a long time.

    soak.py PROGRAMS MINUTES FOLDER

PROGRAMS is the folder of the built programs, FOLDER the folder for all samples and, after a failure,
for its evidence. Prints Markdown; exits with status 1 when a bounce was lost, when a prompt came up
twice or without reason, or when resource use has grown.
"""

import csv
import dataclasses
import random
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parents[2] / "Tests/EndToEnd"))
from virtual_desktop import VirtualDesktop, live_alone, waiting  # noqa: E402
from soak_steps import Steps  # noqa: E402
from vitals import Vitals, growth  # noqa: E402

# The growth is in KiB of private memory a minute, over the second half. For at least ten minutes the heap
# and the toolkit's caches are still growing to their final size, so a short run is not conclusive.
LARGEST_GROWTH, SHORTEST_TO_TELL = 30, 15 * 60
# Idle worker threads, including the toolkit's own, end after half a minute.
SETTLING = 35.0
ROWS = (("proportional memory, MiB", "memory", 1024), ("private memory, MiB", "private", 1024),
        ("descriptors", "descriptors", 1), ("threads", "threads", 1), ("inotify watches", "watches", 1))


class Soak:
    def __init__(self, desktop, programs, minutes):
        self.seconds = minutes * 60
        self.steps = Steps(desktop, programs, random.Random(7))
        self.vitals = Vitals(self.steps.connect.process.pid)
        self.start = self.rest()
        self.watches_of_paths = self.start.watches - self.steps.watched_folders()

    def run(self):
        self.use_for(self.seconds / 4)
        self.warm = self.rest()
        self.use_for(self.seconds * 3 / 4)
        self.end = self.rest()
        self.vitals.end()

    def use_for(self, seconds):
        """Performs steps for a time, at least one."""
        end = time.monotonic() + seconds
        while True:
            self.steps.take_one()
            self.steps.check_that_nothing_is_left()
            self.check_watches()
            if time.monotonic() >= end:
                return

    def check_watches(self):
        """Expects one watch for each folder, and an unchanged number for the paths that lead to them."""
        wanted = self.steps.watched_folders() + self.watches_of_paths
        waiting.wait_for(f"{wanted} watches", lambda: self.vitals.watches() == wanted)

    def rest(self):
        """Waits until all idle worker threads have ended; a scan for the session may need one meanwhile."""
        self.steps.check_that_nothing_is_left()
        begin, fewest = time.monotonic(), self.vitals.threads()

        def rests():
            nonlocal fewest
            threads = self.vitals.threads()
            fewest = min(fewest, threads)
            return threads == fewest and time.monotonic() - begin > SETTLING
        waiting.wait_for("the program to rest", rests)
        return self.vitals.take()

    def check_growth(self):
        for name in ("descriptors", "threads"):
            before, after = getattr(self.warm, name), getattr(self.end, name)
            assert after <= before, f"{name} have increased from {before} to {after}"
        assert self.seconds < SHORTEST_TO_TELL or self.growth() <= LARGEST_GROWTH, "memory has grown"

    def growth(self):
        half = [sample for sample in self.vitals.samples if sample.seconds >= self.seconds / 2]
        return growth(half, "private")

    def report(self):
        yield f"| {self.vitals.age() / 60:.0f} minutes of use | at start | after warm-up | at end | peak |"
        yield "| --- | ---: | ---: | ---: | ---: |"
        for title, name, unit in ROWS:
            values = [getattr(sample, name) for sample in (self.start, self.warm, self.end)]
            decimals = 1 if unit > 1 else 0
            cells = (f"{value / unit:.{decimals}f}" for value in (*values, self.vitals.peak(name)))
            yield f"| {title} | {' | '.join(cells)} |"
        yield ""
        yield from self.steps.report()
        yield f"The program used {100 * self.end.processor / self.end.seconds:.1f} % of a core."
        yield "The run was too short to show whether memory grows." if self.seconds < SHORTEST_TO_TELL \
            else f"Over the second half private memory grew by {self.growth():.1f} KiB a minute."

    def write_samples(self, path):
        with open(path, "w", newline="") as file:
            rows = csv.writer(file)
            rows.writerow(field.name for field in dataclasses.fields(self.start))
            rows.writerows(dataclasses.astuple(sample) for sample in self.vitals.samples)


def main():
    live_alone()
    programs, folder = Path(sys.argv[1]).resolve(), Path(sys.argv[3]).resolve()
    waiting.DEADLINE = 60.0  # Other programs may keep the machine busy.
    with VirtualDesktop() as desktop:
        try:
            soak = Soak(desktop, programs, float(sys.argv[2]))
            soak.run()
            soak.write_samples(folder / "samples.csv")
            print("\n".join(soak.report()))
            soak.check_growth()
        except (AssertionError, OSError) as failure:
            desktop.keep_evidence(folder / "failure")
            print(f"FAILED: {failure}. The evidence is in {folder / 'failure'}", file=sys.stderr)
            return 1
    return 0


sys.exit(main())
