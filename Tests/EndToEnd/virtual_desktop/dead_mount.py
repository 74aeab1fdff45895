"""A file system that has stopped responding, like a network drive whose server is gone.

    dead_mount.py FOLDER PROGRAM...

Runs a program; only that program sees the mount. Any access to the folder blocks until the process
that holds the FUSE device ends, since that process answers no request, not even the kernel's first.
"""

import ctypes
import os
import shlex
import signal
import sys


class DeadMount:
    """`program` is a wrapper to start, privileged, in place of a program that should see the mount."""

    def __init__(self, desktop, folder, program):
        self.desktop = desktop
        self.program = desktop.folder / "with-dead-mount"
        mounted = [sys.executable, __file__, folder, *desktop.unprivileged([program])]
        self.program.write_text(
            f'#!/bin/sh\nexec unshare --mount {shlex.join(str(word) for word in mounted)}\n')
        self.program.chmod(0o755)

    @staticmethod
    def is_allowed(desktop):
        """Whether the kernel allows the mount in a way that other processes can still inspect the program."""
        return (desktop.lives_alone() or os.geteuid() == 0) and os.access("/dev/fuse", os.W_OK)

    def answer(self):
        """Ends the mount: every blocked access fails because there is no such drive."""
        self.desktop.kill_whatever_runs(__file__)


def main(folder, program):
    device = os.open("/dev/fuse", os.O_RDWR)
    options = f"fd={device},rootmode=40000,user_id={os.getuid()},group_id={os.getgid()}"
    if ctypes.CDLL(None, use_errno=True).mount(
            b"dead", os.fsencode(folder), b"fuse", 0, options.encode()) != 0:
        sys.exit(f"cannot mount {folder}: {os.strerror(ctypes.get_errno())}")
    if os.fork() == 0:
        signal.pause()
    os.close(device)
    os.execvp(program[0], program)


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2:])
