"""The virtual desktop: starts each service and waits until that service is ready."""

import fcntl
import json
import os
import sys
from pathlib import Path

import dbus.bus

from .accessibility import Accessibility
from .alone import is_alone
from .display import Display
from .processes import PrivateSession
from .waiting import wait_for

NOTIFICATIONS = "org.freedesktop.Notifications"
PORTAL = "org.freedesktop.portal.Desktop"

# Only the accessibility bus can be activated, so that calls to a missing service fail at once.
BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
ACCESSIBILITY_SERVICE = """[D-BUS Service]
Name=org.a11y.Bus
Exec=/usr/libexec/at-spi-bus-launcher
"""


WINDOW_MANAGER_CONFIGURATION = """<openbox_config xmlns="http://openbox.org/3.4/rc">
  <theme>
    <name>{theme}</name>
    <titleLayout>LC</titleLayout>
    <font place="ActiveWindow"><name>DejaVu Sans</name><size>9</size><weight>bold</weight></font>
    <font place="InactiveWindow"><name>DejaVu Sans</name><size>9</size></font>
  </theme>
</openbox_config>
"""
# A window manager's theme and a background for a light and a dark desktop.
LOOKS = {"light": ("Clearlooks", 0x5b7186), "dark": ("Onyx", 0x1d2530)}


class VirtualDesktop(PrivateSession):
    """Ready to use once constructed; `with` ends it. `notifications` lists the service's
    capabilities; with None there is no service. `kind` is the value of XDG_CURRENT_DESKTOP.

    Desktops outside a separate namespace take turns: the program examines all processes of its
    user, and would find the DAW of another desktop.
    """

    def __init__(self, size="1280x800", look="light", notifications="body,actions,icon-static",
                 kind=None):
        self.turn = open(f"/tmp/virtual-desktop-{os.getuid()}.lock", "w")
        if not is_alone():
            fcntl.flock(self.turn, fcntl.LOCK_EX)
        super().__init__()
        self.environment |= {"XDG_CURRENT_DESKTOP": kind} if kind else {}
        try:
            self._start_bus()
            self._start_display(size)
            self.bus = dbus.bus.BusConnection(self.environment["DBUS_SESSION_BUS_ADDRESS"])
            self._start_window_manager(look)
            self.accessibility = Accessibility(self.bus, self.display)
            if notifications is not None:
                self.start_service("notification_server", NOTIFICATIONS, notifications)
            if look == "dark":
                self.start_service("appearance_portal", PORTAL)
        except BaseException:
            self.end()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.accessibility.close()
        self.display.close()
        self.bus.close()
        self.end()
        self.turn.close()

    @staticmethod
    def lives_alone():
        return is_alone()

    def notifications(self):
        """All notifications so far, the oldest first."""
        lines = self.log("notification_server").splitlines()
        return [json.loads(line) for line in lines if line.startswith("{")]

    def wait_for_notification(self, body):
        def posted():
            return next((note for note in self.notifications() if note["body"] == body), None)
        return wait_for(f'a notification "{body}"', posted)

    def has_bus_name(self, name):
        return self.bus.name_has_owner(name)

    def choose_scheme(self, scheme):
        """Changes the scheme, as the user does in the settings: 1 is dark, 2 light, 0 neither."""
        if not self.has_bus_name(PORTAL):
            self.start_service("appearance_portal", PORTAL)
        self.bus.call_blocking(PORTAL, "/org/freedesktop/portal/desktop", "local.VirtualDesktop",
                               "Choose", "u", (scheme,))

    def keep_evidence(self, folder):
        """Saves a picture, the contents of all windows, and every log in a folder."""
        folder.mkdir(parents=True, exist_ok=True)
        self.display.take_picture(folder / "screen.png")
        (folder / "windows.txt").write_text(self.accessibility.dump())
        for log in self.logs.iterdir():
            (folder / log.name).write_bytes(log.read_bytes())

    def _start_bus(self):
        socket = self.runtime / "bus"
        services = self.made_folder("services")
        (services / "org.a11y.Bus.service").write_text(ACCESSIBILITY_SERVICE)
        configuration = self.folder / "bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(socket=socket, services=services))
        self.start("bus", ["dbus-daemon", f"--config-file={configuration}", "--nofork"])
        wait_for("the session bus", socket.exists)
        self.environment |= {"DBUS_SESSION_BUS_ADDRESS": f"unix:path={socket}",
                             "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_QPA_PLATFORM": "xcb"}

    def _start_display(self, size):
        """Starts the server, which picks a free display number and writes it when it is ready."""
        ready, number = os.pipe()
        server = self.start("display", ["Xvfb", "-displayfd", number, "-screen", "0", f"{size}x24",
                                        "-nolisten", "tcp", "-noreset"], pass_fds=[number])
        os.close(number)
        with open(ready) as answer:
            line = answer.readline().strip()
        if not line:
            raise RuntimeError(f"the display did not start ({server.wait()}): {self.log('display')}")
        self.environment["DISPLAY"] = f":{line}"
        self.display = Display(f":{line}")

    def _start_window_manager(self, look):
        theme, background = LOOKS[look]
        configuration = self.folder / "openbox.xml"
        configuration.write_text(WINDOW_MANAGER_CONFIGURATION.format(theme=theme))
        ready = self.folder / "window-manager-ready"
        self.start("window-manager", ["openbox", "--sm-disable", "--config-file", configuration,
                                      "--startup", f"touch {ready}"])
        # It announces itself too early: it does not manage a window that opens before it is ready.
        wait_for("the window manager", ready.exists)
        self.display.set_background(background)
        self.display.move_pointer_aside()

    def start_service(self, name, bus_name, *arguments):
        """Starts one of the services in this folder, which logs the calls that it receives."""
        self.start(name, [sys.executable, Path(__file__).with_name(f"{name}.py"), *arguments])
        wait_for(f"the owner of {bus_name}", lambda: self.has_bus_name(bus_name))
