"""A separate process namespace for a script, without any other process of this machine.

The program examines every process of its user, so it would find the DAWs, buses and browsers of the
person who works here, and those of other virtual desktops. So each script starts with
`live_alone()`, which restarts it in a namespace with only its own processes, an empty /tmp and a
network without a connection to the outside.
"""

import ctypes
import fcntl
import os
import signal
import socket
import struct
import subprocess
import sys
from pathlib import Path

MARK = "VIRTUAL_DESKTOP_NAMESPACE"
NAMESPACES = ["--mount", "--pid", "--ipc", "--net", "--fork", "--kill-child", "--mount-proc"]
# Without root, a user namespace is needed in addition; user and group IDs stay the same in it.
AS_USER = ["--user", "--map-current-user", "--keep-caps"]
MS_BIND, MS_REC = 4096, 16384


def live_alone():
    """Returns at once if the script already lives alone. If the kernel does not allow it, prints a
    message; the script's desktops then wait for those of other scripts."""
    if is_alone():
        return
    itself = [sys.executable, *sys.orig_argv[1:]]
    kinds = NAMESPACES if os.geteuid() == 0 else NAMESPACES + AS_USER
    beginning = ["unshare", *kinds, sys.executable, __file__]
    trial = subprocess.run([*beginning, "true"], capture_output=True, text=True, check=False)
    if trial.returncode == 0:
        os.execvp(beginning[0], beginning + itself)
    print(f"No process namespace ({trial.stderr.strip()}): virtual desktops take turns, and see the"
          " other processes of this user.", file=sys.stderr)


def is_alone():
    return os.environ.get(MARK) == own_namespace()


def own_namespace():
    return os.readlink("/proc/self/ns/pid")


def main(command):
    """The first process of a namespace, which sets it up, and reaps every orphan."""
    programs = [value for name, value in os.environ.items() if name.startswith("STEMVAULT_")]
    empty_tmp([*command, *programs, os.getcwd(), __file__])
    start_loopback()
    process = subprocess.Popen(command, env=os.environ | {MARK: own_namespace()})
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # The terminal sends it to the script as well.
    signal.signal(signal.SIGTERM, lambda *_: process.terminate())
    while (ended := os.wait())[0] != process.pid:
        pass
    code = os.waitstatus_to_exitcode(ended[1])
    return code if code >= 0 else 128 - code


def empty_tmp(names):
    """Empties /tmp, except for top folders with files in use: the repository may be cloned there."""
    tops = {Path(name).parts[2] for name in names if name.startswith("/tmp/")}
    kept = {f"/tmp/{top}": os.open(f"/tmp/{top}", os.O_PATH | os.O_DIRECTORY)
            for top in tops if os.path.isdir(f"/tmp/{top}")}
    here = os.getcwd()
    mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777")
    for folder, descriptor in kept.items():
        os.mkdir(folder)
        mount(f"/proc/self/fd/{descriptor}", folder, "", MS_BIND | MS_REC)
        os.close(descriptor)
    os.chdir(here)


def mount(source, target, kind, flags, options=""):
    if ctypes.CDLL(None, use_errno=True).mount(
            os.fsencode(source), os.fsencode(target), kind.encode(), flags, options.encode()) != 0:
        sys.exit(f"cannot mount {target}: {os.strerror(ctypes.get_errno())}")


def start_loopback():
    set_flags, is_up = 0x8914, 1
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as control:
        fcntl.ioctl(control, set_flags, struct.pack("16sH22x", b"lo", is_up))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
