"""Samples the resource use of a process every few seconds, and computes its growth."""

import itertools
import os
import statistics
import threading
import time
from dataclasses import dataclass
from pathlib import Path


@dataclass
class Sample:
    seconds: float
    memory: int  # KiB, with shared memory counted in proportion (PSS)
    private: int  # KiB that the process has written and does not share
    descriptors: int
    threads: int
    watches: int
    processor: float  # Seconds of processor time since its start


class Vitals:
    """Starts sampling at once, on a separate thread."""

    INTERVAL = 3.0

    def __init__(self, pid):
        self.process = Path(f"/proc/{pid}")
        self.begin = time.monotonic()
        self.samples = []
        self.is_over = threading.Event()
        self.thread = threading.Thread(target=self._look_on, daemon=True)
        self.thread.start()

    def end(self):
        self.is_over.set()
        self.thread.join()

    def age(self):
        return time.monotonic() - self.begin

    def take(self):
        """Takes a sample now, and returns it."""
        memory = (self.process / "smaps_rollup").read_text().split()
        ticks = (self.process / "stat").read_text().rpartition(")")[2].split()[11:13]
        sample = Sample(
            self.age(), int(memory[memory.index("Pss:") + 1]),
            int(memory[memory.index("Private_Dirty:") + 1]), len(os.listdir(self.process / "fd")),
            self.threads(), self.watches(), sum(map(int, ticks)) / os.sysconf("SC_CLK_TCK"))
        self.samples.append(sample)
        return sample

    def peak(self, name):
        return max(getattr(sample, name) for sample in self.samples)

    def threads(self):
        return len(os.listdir(self.process / "task"))

    def watches(self):
        count = 0
        for entry in os.listdir(self.process / "fdinfo"):
            try:
                count += (self.process / "fdinfo" / entry).read_text().count("inotify wd:")
            except OSError:  # Closed meanwhile.
                pass
        return count

    def _look_on(self):
        while not self.is_over.wait(self.INTERVAL):
            try:
                self.take()
            except OSError:  # The process has ended; the steps report that.
                return


def growth(samples, name):
    """The growth in a minute: the median of the slopes between all pairs, which ignores single jumps."""
    slopes = [(getattr(later, name) - getattr(earlier, name)) / (later.seconds - earlier.seconds)
              for earlier, later in itertools.combinations(samples, 2)
              if later.seconds > earlier.seconds]
    return statistics.median(slopes) * 60 if slopes else 0.0
