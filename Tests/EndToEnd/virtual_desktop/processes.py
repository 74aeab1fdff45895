"""Processes that share a private environment, and whose every descendant ends with them."""

import os
import shutil
import signal
import subprocess
import tempfile
import uuid
from pathlib import Path

from .waiting import wait_for

# The only inherited variables: how sanitized programs are to behave.
INHERITED = ("ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")
MARK = "VIRTUAL_DESKTOP_MARK"


class PrivateSession:
    """A temporary home and the processes that live in it.

    The path of the folder is short, because the names of sockets in it end at 107 bytes.
    """

    def __init__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="desktop-", dir="/tmp"))
        self.logs = self.made_folder("logs")
        self.runtime = self.made_folder("run")
        self.mark = uuid.uuid4().hex
        self.processes = {}
        self.environment = {name: os.environ[name] for name in INHERITED if name in os.environ}
        self.environment |= {
            MARK: self.mark,
            # No browser of this machine is ever started, and none of its services asked.
            "BROWSER": "/nowhere",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.runtime}/none",
            "LC_ALL": "C.UTF-8",
            "PATH": "/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin",
            "USER": os.environ.get("USER", "user"),
            "XDG_DATA_DIRS": str(self._shared_data()),
            "XDG_RUNTIME_DIR": str(self.runtime),
        }
        self.live_in(self.made_folder("home"))

    def live_in(self, home):
        self.home = home
        self.environment |= {
            "HOME": str(home),
            "XDG_CACHE_HOME": str(home / ".cache"),
            "XDG_CONFIG_HOME": str(home / ".config"),
            "XDG_DATA_HOME": str(home / ".local/share"),
        }

    def _shared_data(self):
        """What is installed here, all but the applications: a browser among them would be found."""
        folder = self.made_folder("share")
        for entry in Path("/usr/share").iterdir():
            if entry.name != "applications":
                (folder / entry.name).symlink_to(entry)
        return folder

    def made_folder(self, name):
        folder = self.folder / name
        folder.mkdir(mode=0o700, parents=True, exist_ok=True)
        return folder

    def start(self, name, command, environment=None, privileged=False, **options):
        """Starts a program with its output in the log of that name. It ends with us, even killed.

        `environment` changes the desktop's own; a variable that is None is left out.
        """
        command = command if privileged else self.unprivileged(command)
        merged = self.environment | (environment or {})
        merged = {name: value for name, value in merged.items() if value is not None}
        options.setdefault("stdin", subprocess.DEVNULL)
        with open(self.logs / f"{name}.log", "ab") as log:
            options.setdefault("stdout", log)
            process = subprocess.Popen(
                ["setpriv", "--pdeathsig", "KILL", *(str(part) for part in command)],
                env=merged, cwd=self.home, stderr=log, **options)
        self.processes[name] = process
        return process

    @staticmethod
    def unprivileged(command):
        """A script that lives alone has more privileges there than its user has elsewhere."""
        return ["setpriv", "--inh-caps=-all", "--ambient-caps=-all", *command]

    def log(self, name):
        path = self.logs / f"{name}.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def end(self):
        """Ends what was started, last first, and then whatever of it is left anywhere."""
        for process in reversed(self.processes.values()):
            end_process(process)
        self.kill_whatever_runs()
        wait_for("the end of every process of the desktop", lambda: not self.marked_processes())
        shutil.rmtree(self.folder, ignore_errors=True)

    def kill_whatever_runs(self, argument=None):
        """Kills every process, or those that were started with an argument."""
        for pid in self.marked_processes():
            words = read_bytes(Path(f"/proc/{pid}/cmdline")).split(b"\0")
            if argument is None or os.fsencode(argument) in words:
                signal_process(pid, signal.SIGKILL)

    def marked_processes(self):
        """Services that a bus has started are nobody's children; they carry our mark all the same."""
        mark = f"{MARK}={self.mark}".encode()
        return [int(entry.name) for entry in Path("/proc").iterdir()
                if entry.name.isdigit() and mark in read_bytes(entry / "environ").split(b"\0")]


def end_process(process):
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(timeout=5)
        except subprocess.TimeoutExpired:
            process.kill()
    process.wait()
    if process.stdin:
        process.stdin.close()


def signal_process(pid, number):
    try:
        os.kill(pid, number)
    except ProcessLookupError:
        pass


def read_bytes(path):
    """The content of a file in /proc, or nothing where it is gone or not ours to read."""
    try:
        return path.read_bytes()
    except OSError:
        return b""
