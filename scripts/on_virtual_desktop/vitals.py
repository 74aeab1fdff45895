"""What a process takes up, looked at every few seconds, and whether that grows."""

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
    memory: int  # KiB of memory, what is shared counted in proportion
    private: int  # KiB that the process has written and nobody shares
    descriptors: int
    threads: int
    watches: int
    processor: float  # seconds of processor time since its start


class Vitals:
    """Begins to look at once, on a thread of its own."""

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
        """Looks now, and returns what was seen."""
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
            except OSError:  # The process has ended; whoever drives it says so.
                return


def growth(samples, name):
    """A minute's growth: the median of the slopes between all pairs, which no single leap moves."""
    slopes = [(getattr(later, name) - getattr(earlier, name)) / (later.seconds - earlier.seconds)
              for earlier, later in itertools.combinations(samples, 2)
              if later.seconds > earlier.seconds]
    return statistics.median(slopes) * 60 if slopes else 0.0
