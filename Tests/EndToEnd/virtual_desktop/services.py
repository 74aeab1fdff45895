"""Sets up the program's services as a file manager uses them: entries, Courier, bus; and a browser."""

import os
import select
import signal
import subprocess
import sys
from pathlib import Path

import dbus

from .processes import process_of
from .waiting import wait_for

NAME = "net.stemvault.Connect"
NOTIFICATION_SERVICE = """[D-BUS Service]
Name=org.freedesktop.Notifications
Exec=/bin/sh -c "exec '{python}' '{server}' {capabilities} >> '{log}'"
"""
BROWSER = """#!/bin/sh
printf '%s\\n' "$1" >> {log}
"""
BROWSER_ENTRY = """[Desktop Entry]
Type=Application
Name=Stand-in browser
Exec={browser} %u
MimeType=x-scheme-handler/https;
"""


class Services:
    """Makes the services available to programs that are started afterwards; starts nothing itself. The
    services of a build are installed into a folder of the desktop; an installation has them already."""

    def __init__(self, desktop, programs):
        self.desktop = desktop
        is_build = (programs.parent / "CMakeCache.txt").exists()
        prefix = self._install(programs) if is_build else programs.parent
        self.courier = prefix / "libexec/stemvault-connect/courier"
        (desktop.folder / "services" / f"{NAME}.service").symlink_to(
            prefix / f"share/dbus-1/services/{NAME}.service")
        self._tell_bus()
        self._register_browser()

    def run(self, word, *files, **options):
        """Starts the Courier as a file manager does, and returns its process."""
        return self.desktop.start("courier", [self.courier, word, *files], **options)

    def offer_notifications(self, capabilities):
        """Adds a notification service that the bus starts when it is first needed."""
        (self.desktop.folder / "services/notifications.service").write_text(
            NOTIFICATION_SERVICE.format(
                python=sys.executable, server=Path(__file__).with_name("notification_server.py"),
                capabilities=capabilities, log=self.desktop.logs / "notification_server.log"))
        self._tell_bus()

    def opened(self):
        """The URLs that the browser was started with so far."""
        return self.desktop.log("browser").splitlines()

    def wait_for_url(self):
        return wait_for("the browser to be given a URL", self.opened)[-1]

    def _install(self, programs):
        prefix = self.desktop.made_folder("usr")
        subprocess.run(["cmake", "--install", programs.parent, "--prefix", prefix, "--component",
                        "services"], check=True, stdout=subprocess.DEVNULL)
        for link, target in (("libexec/stemvault-connect/courier", programs / "courier"),
                             ("bin/stemvault-connect", programs / "stemvault-connect"),
                             ("share/icons", programs.parent / "Resources/icons"),
                             # Caja searches only /usr and this folder.
                             (self.desktop.home / ".local/share/caja-python",
                              prefix / "share/caja-python")):
            (prefix / link).parent.mkdir(parents=True, exist_ok=True)
            (prefix / link).symlink_to(target)
        self.desktop.environment["XDG_DATA_DIRS"] = \
            f"{prefix}/share:{self.desktop.environment['XDG_DATA_DIRS']}"
        return prefix

    def _tell_bus(self):
        """Passes the environment to the bus, as a session does at its start, and reloads its services."""
        environment = dbus.Dictionary(self.desktop.environment, signature="ss")
        interface = dbus.Interface(
            self.desktop.bus.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus"),
            "org.freedesktop.DBus")
        interface.UpdateActivationEnvironment(environment)
        interface.ReloadConfig()

    def _register_browser(self):
        browser = self.desktop.made_folder("bin") / "browser"
        browser.write_text(BROWSER.format(log=self.desktop.logs / "browser.log"))
        browser.chmod(0o755)
        entry = self.desktop.home / ".local/share/applications/browser.desktop"
        entry.parent.mkdir(parents=True, exist_ok=True)
        entry.write_text(BROWSER_ENTRY.format(browser=browser))
        choices = self.desktop.home / ".config/mimeapps.list"
        choices.parent.mkdir(parents=True, exist_ok=True)
        choices.write_text("[Default Applications]\nx-scheme-handler/https=browser.desktop\n")


class StartedByBus:
    """A program that the bus has started. It is not our child process, so its exit status is unknown."""

    def __init__(self, desktop):
        wait_for(f"the owner of {NAME}", lambda: desktop.has_bus_name(NAME))
        self.pid = process_of(desktop.bus, NAME)
        self.descriptor = os.pidfd_open(self.pid)

    def send_signal(self, number):
        signal.pidfd_send_signal(self.descriptor, number)

    def wait(self, timeout):
        ended, _, _ = select.select([self.descriptor], [], [], timeout)
        if not ended:
            raise TimeoutError(f"the program still runs after {timeout} s")
        return 0
