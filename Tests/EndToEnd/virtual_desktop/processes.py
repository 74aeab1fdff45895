"""Processes that share a private environment, and end with all their descendants."""

import os
import shutil
import signal
import subprocess
import tempfile
import uuid
from pathlib import Path

from .waiting import wait_for

# The only inherited variables: options for sanitized programs.
INHERITED = ("ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS")
MARK = "VIRTUAL_DESKTOP_MARK"
# The same font on every machine, whatever else is installed. The first rule for a name counts.
FONTS = """<fontconfig>
  <alias binding="same"><family>sans-serif</family><prefer><family>DejaVu Sans</family></prefer></alias>
  <alias binding="same"><family>Sans Serif</family><prefer><family>DejaVu Sans</family></prefer></alias>
  <alias binding="same"><family>Sans</family><prefer><family>DejaVu Sans</family></prefer></alias>
  <include>/etc/fonts/fonts.conf</include>
</fontconfig>
"""
# What the toolkit does not free when it ends: parts of its Wayland connection, and a call to the portal that
# was not answered.
TOOLKIT_LEAKS = """leak:libwayland-client.so
leak:QGenericUnixServices
"""


class PrivateSession:
    """A temporary home and its processes.

    The path of the folder is short, because the path of a socket can have at most 107 bytes.
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
            # Keeps programs from starting this machine's browser and from using its services.
            "BROWSER": "/nowhere",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.runtime}/none",
            "FONTCONFIG_FILE": str(self._made_file("fonts.conf", FONTS)),
            "LC_ALL": "C.UTF-8",
            "LSAN_OPTIONS": f"suppressions={self._made_file('leaks', TOOLKIT_LEAKS)}:print_suppressions=0",
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
        """The installed data, except what must not be found here.

        Among the applications is a browser. The fonts are known by their own path; under a new one, each
        program would read them all again, and store what it found.
        """
        folder = self.made_folder("share")
        for entry in Path("/usr/share").iterdir():
            if entry.name not in ("applications", "fonts"):
                (folder / entry.name).symlink_to(entry)
        return folder

    def _made_file(self, name, text):
        file = self.folder / name
        file.write_text(text)
        return file

    def made_folder(self, name):
        folder = self.folder / name
        folder.mkdir(mode=0o700, parents=True, exist_ok=True)
        return folder

    def start(self, name, command, environment=None, privileged=False, **options):
        """Starts a program with its output in the log of that name. It ends with us, even if we are killed.

        `environment` overrides the desktop's own; a variable that is None is removed.
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
        """Drops the extra privileges that a script has in its own namespace."""
        return ["setpriv", "--inh-caps=-all", "--ambient-caps=-all", *command]

    def log(self, name):
        path = self.logs / f"{name}.log"
        return path.read_text(errors="replace") if path.exists() else ""

    def end(self):
        """Ends the started programs, the last first, and then any remaining descendants."""
        for process in reversed(self.processes.values()):
            end_process(process)
        self.kill_whatever_runs()
        wait_for("the end of every process of the desktop", lambda: not self.marked_processes())
        shutil.rmtree(self.folder, ignore_errors=True)

    def kill_whatever_runs(self, argument=None):
        """Kills every process, or only those with that argument."""
        for pid in self.marked_processes():
            words = read_bytes(Path(f"/proc/{pid}/cmdline")).split(b"\0")
            if argument is None or os.fsencode(argument) in words:
                signal_process(pid, signal.SIGKILL)

    def marked_processes(self):
        """All processes with our mark, which even services have that the bus started."""
        mark = f"{MARK}={self.mark}".encode()
        return [int(entry.name) for entry in Path("/proc").iterdir()
                if entry.name.isdigit() and mark in read_bytes(entry / "environ").split(b"\0")]


def process_of(bus, name):
    """The number of the process that a name on a bus belongs to."""
    return int(bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus", "GetConnectionUnixProcessID", "s", (name,)))


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
    """The content of a file in /proc, or nothing if it is gone or not readable."""
    try:
        return path.read_bytes()
    except OSError:
        return b""
