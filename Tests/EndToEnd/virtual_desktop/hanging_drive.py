"""A drive that works until it stops answering, as that of a network does whose server goes."""

import os
import shutil
import signal
from pathlib import Path

from .waiting import wait_for


class HangingDrive:
    """Appears in a folder at once; end it, or whoever waits for it waits for good."""

    def __init__(self, desktop, folder):
        content = desktop.made_folder("content-of-drive")
        self.daemon = desktop.start("drive", ["bindfs", "-f", content, folder], privileged=True)
        wait_for("the drive", lambda: os.path.ismount(folder))

    @staticmethod
    def is_allowed(desktop):
        """Only where no other program of this machine would wait for it too."""
        return (desktop.lives_alone() and os.access("/dev/fuse", os.W_OK)
                and shutil.which("bindfs") is not None)

    def stop_answering(self, process):
        """Between two questions of the process: one that the daemon has taken on and never answers keeps
        the kernel from ending its asker."""
        def stopped():
            self.daemon.send_signal(signal.SIGSTOP)
            wait_for("the daemon to stop", self._is_stopped)
            if not self._is_asked_by(process):
                return True
            self.daemon.send_signal(signal.SIGCONT)
            return False
        wait_for("a moment without a question to the drive", stopped)

    def wait_until_it_holds_up(self, process):
        """Until a thread of the process has asked the drive for something."""
        wait_for("a question to the drive", lambda: self._is_asked_by(process))

    def _is_stopped(self):
        return all((task / "stat").read_text().rpartition(")")[2].split()[0] == "T"
                   for task in Path(f"/proc/{self.daemon.pid}/task").iterdir())

    @staticmethod
    def _is_asked_by(process):
        return any("request_wait_answer" in (task / "wchan").read_text()
                   for task in Path(f"/proc/{process.pid}/task").iterdir())

    def end(self):
        self.daemon.kill()
        self.daemon.wait()
