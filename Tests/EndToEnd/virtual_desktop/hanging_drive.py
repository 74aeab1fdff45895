"""A drive that works until it stops responding, like a network drive whose server disappears."""

import os
import shutil
import signal
from pathlib import Path

from .waiting import wait_for


class HangingDrive:
    """Mounted on a folder at once. Must be ended, or processes that access it block forever."""

    def __init__(self, desktop, folder):
        content = desktop.made_folder("content-of-drive")
        self.daemon = desktop.start("drive", ["bindfs", "-f", content, folder], privileged=True)
        wait_for("the drive", lambda: os.path.ismount(folder))

    @staticmethod
    def is_allowed(desktop):
        """Allowed only if no other program on this machine could block on it."""
        return (desktop.lives_alone() and os.access("/dev/fuse", os.W_OK)
                and shutil.which("bindfs") is not None)

    def stop_answering(self, process):
        """Stops the daemon between two requests of the process: a request that the daemon has accepted and
        never answers would keep the kernel from killing the process."""
        def stopped():
            self.daemon.send_signal(signal.SIGSTOP)
            wait_for("the daemon to stop", self._is_stopped)
            if not self._is_asked_by(process):
                return True
            self.daemon.send_signal(signal.SIGCONT)
            return False
        wait_for("a moment without a question to the drive", stopped)

    def wait_until_it_holds_up(self, process):
        """Waits until a thread of the process blocks on a request to the drive."""
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
