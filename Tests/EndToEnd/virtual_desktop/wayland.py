"""The virtual desktop on a Wayland compositor, with or without XWayland."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from .desktop import VirtualDesktop
from .waiting import wait_for

CONFIGURATION = """output HEADLESS-1 resolution {size} bg #5b7186 solid_color
default_border normal
for_window [title=".*"] floating enable
xwayland {xwayland}
exec echo "$WAYLAND_DISPLAY,$SWAYSOCK,$DISPLAY" > {folder}/starting && mv {folder}/starting {folder}/ready
"""


# An X server accepts only its own user, unless that user admits others.
ADMISSION = """
import sys
from Xlib import X, display
server = display.Display(sys.argv[1])
server.change_hosts(X.HostInsert, X.FamilyServerInterpreted, b"localuser\\0root")
server.sync()
"""


class WaylandDesktop(VirtualDesktop):
    has_x = False

    def _start_display(self, size):
        """Starts the compositor. It refuses to run as root, so another user runs it, in its own folder."""
        self.compositor_folder = folder = Path(tempfile.mkdtemp(prefix="wayland-", dir="/tmp"))
        self.other_user = []
        if os.geteuid() == 0:
            shutil.chown(folder, "nobody")
            self.other_user = ["--reuid=nobody", "--regid=nogroup", "--clear-groups"]
        configuration = folder / "config"
        configuration.write_text(CONFIGURATION.format(
            size=size, xwayland="enable" if self.has_x else "disable", folder=folder))
        self.start("display", ["setpriv", *self.other_user, "--pdeathsig", "KILL",
                               "sway", "--config", configuration], {
            "HOME": str(folder), "XDG_RUNTIME_DIR": str(folder), "WLR_BACKENDS": "headless",
            "WLR_LIBINPUT_NO_DEVICES": "1", "WLR_RENDERER": "pixman"})
        wait_for("the compositor", (folder / "ready").exists)
        wayland, socket, x11 = (folder / "ready").read_text().strip().split(",")
        # The toolkit loads the machine's graphics drivers with its first window, and some of them leak
        # memory when they are unloaded, so the scenarios run without drivers.
        self.environment |= {"__EGL_VENDOR_LIBRARY_FILENAMES": "/dev/null",
                             "LIBGL_DRIVERS_PATH": "/nonexistent"}
        del self.environment["QT_QPA_PLATFORM"]
        self.environment |= {"WAYLAND_DISPLAY": str(folder / wayland), "SWAYSOCK": socket}
        if self.has_x:
            self._enter_x(x11)
        self.display = WaylandDisplay(self.environment)
        # Programs notice a new keyboard too late for its first key, so one is present all the time.
        self.start("keyboard", ["wtype", "-s", "86400000"])

    def _enter_x(self, display):
        self.environment["DISPLAY"] = display
        if self.other_user:
            admission = self.start("admission", ["setpriv", *self.other_user, sys.executable, "-c",
                                                 ADMISSION, display])
            assert admission.wait(timeout=10) == 0, self.log("admission")

    def _start_window_manager(self, look):
        pass

    def end(self):
        super().end()
        shutil.rmtree(self.compositor_folder, ignore_errors=True)


class XWaylandDesktop(WaylandDesktop):
    has_x = True


class WaylandDisplay:
    """The display, queried from the compositor, which is the only source for the list of windows."""

    def __init__(self, environment):
        self.environment = environment

    def close(self):
        pass

    def window_of(self, title, pid):
        """The window of a process by the start of its title, as a program may append its name."""
        return next((window["id"] for window in self.windows()
                     if (window["name"] or "").startswith(title) and window["pid"] == pid), None)

    def windows(self):
        return [node for node in nodes(json.loads(self._run("swaymsg", "-rt", "get_tree")))
                if "pid" in node]

    def protocol_of(self, window):
        """"xdg_shell" for a native Wayland window, "xwayland" for an X11 window."""
        return next(each["shell"] for each in self.windows() if each["id"] == window)

    def wait_for_keyboard(self, window):
        wait_for(f"the keyboard to be with window {window}",
                 lambda: any(each["id"] == window and each["focused"] for each in self.windows()))

    def press_key(self, name):
        self._run("wtype", "-k", name)

    def press_keys(self, name):
        """Presses one key; scenarios on Wayland need no combinations."""
        self.press_key(name)

    def take_picture(self, path):
        path.parent.mkdir(parents=True, exist_ok=True)
        self._run("grim", path)

    def _run(self, *command):
        return subprocess.run(command, env=self.environment, check=True, capture_output=True,
                              timeout=10).stdout


def nodes(node):
    """A node of the compositor's tree and all below it."""
    yield node
    for child in node.get("nodes", []) + node.get("floating_nodes", []):
        yield from nodes(child)
