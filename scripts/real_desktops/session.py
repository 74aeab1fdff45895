"""A real desktop's session on a display without a screen: the parts that all desktops share."""

import ast
import json
import shutil
import subprocess
import sys
import time
from pathlib import Path

import dbus
import dbus.bus

from virtual_desktop import VirtualDesktop, wait_for
from virtual_desktop.file_manager import FileManager

from .screen import Picture

WATCHER = "org.kde.StatusNotifierWatcher"
SERVICE = "courier add-selection"  # The command of the hotkey, without its folder.
STARTING = 60  # Seconds that a desktop may take to start on a busy machine.


class Impossible(Exception):
    """Raised with the reason when a check is not possible on this desktop."""


class RealDesktop(VirtualDesktop):
    """Each desktop is a class derived from this one. It defines the desktop's name, how its parts are
    started, and how a user changes the settings that the checks need changed."""

    name = ""  # The value of XDG_CURRENT_DESKTOP.
    session_type = "x11"
    file_manager = ""
    shortcuts_page = ""  # The program that shows the desktop's shortcuts.
    shortcuts_title = ""  # Part of the title of its window.
    way_to_entry = ()  # The menus in the file manager that lead to the program's entries.

    def __init__(self, results):
        self.results = results
        super().__init__(size="1280x800", notifications=None)

    def __exit__(self, *_):
        self.keep_logs()
        super().__exit__()

    def keep_logs(self):
        """Keeps the last picture and every program's log, whether the desktop started or not."""
        shutil.copytree(self.logs, self.results / "logs", dirs_exist_ok=True)
        self.display.take_picture(self.results / "last.png")

    def start_session(self):
        """Starts the desktop's own programs, up to the panel."""
        raise NotImplementedError

    def set_appearance(self, look):
        """Switches the running desktop to "light" or "dark", as its settings do."""
        raise NotImplementedError

    def open_file_manager(self, folder):
        """Opens the desktop's own file manager in front, showing a folder."""
        return FileManager(self, self.file_manager, folder)

    # The desktop's own list of commands with shortcuts. An entry is whatever identifies it in that list.

    def shortcut(self):
        """The entry of the program's command, or None."""
        raise NotImplementedError

    def shows_shortcuts(self):
        """Whether the page with the list is on the screen."""
        return any(self.shortcuts_title in window.name for window in self.accessibility.windows())

    def bind(self, entry):
        """Assigns Control, Super and Y to the entry, as the desktop's page does."""
        raise NotImplementedError

    def close_shortcuts_page(self):
        """Ends it by name: all processes in this namespace belong to the desktop."""
        self.run("pkill", "--full", self.shortcuts_page)

    def version(self):
        """The version of the desktop's main package."""
        answer = self.run("dpkg-query", "-W", "-f=${Version}", self.main_package)
        return answer.split(":")[-1].split("-")[0].split("+")[0]

    def _start_bus(self):
        self.live_in(Path("/home/engineer"))
        socket = self.runtime / "bus"
        # Of this machine, or not what a real desktop has.
        for name in ("BROWSER", "DBUS_SYSTEM_BUS_ADDRESS", "FONTCONFIG_FILE"):
            del self.environment[name]
        self.environment |= {
            "XDG_CURRENT_DESKTOP": self.name, "XDG_SESSION_TYPE": self.session_type,
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share", "XDG_CONFIG_DIRS": "/etc/xdg",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "LIBGL_ALWAYS_SOFTWARE": "1"}
        self.start("bus", ["dbus-daemon", "--session", "--nofork", f"--address=unix:path={socket}"])
        wait_for("the session bus", socket.exists)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"

    def _start_window_manager(self, look):
        self.tell_bus()
        try:
            self.start_session()
            wait_for("the panel's tray", self.has_tray, STARTING)
            wait_for("the desktop on the screen", lambda: self.still_picture(3).is_drawn(), STARTING)
        except BaseException:
            self.keep_logs()
            raise
        self.put_pointer_aside()
        self.record = BusRecord(self)

    def wait_for_window_manager(self):
        wait_for("the window manager", self.display.has_window_manager, STARTING)

    def put_pointer_aside(self):
        """Moves the pointer to the edge, but not into a corner, where some desktops react to it."""
        self.display.move_pointer(1279, 400)

    def tell_bus(self):
        """Passes the environment, such as the display, to services that the bus starts."""
        environment = dbus.Dictionary(
            {name: value for name, value in self.environment.items()}, signature="ss")
        self.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                  "UpdateActivationEnvironment", "a{ss}", environment)

    def call(self, owner, path, interface, method, signature="", *arguments):
        bus = dbus.bus.BusConnection(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        try:
            return bus.call_blocking(owner, path, interface, method, signature, arguments, timeout=20)
        finally:
            bus.close()

    def run(self, *command):
        """Runs a tool until it ends and returns its output."""
        done = subprocess.run([str(part) for part in command], env=self.environment, cwd=self.home,
                              capture_output=True, text=True, timeout=60, check=False)
        if done.returncode != 0:
            raise AssertionError(f"{command}: {done.stderr}")
        return done.stdout.strip()

    def has_tray(self):
        try:
            return self.call(WATCHER, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties",
                             "Get", "ss", WATCHER, "IsStatusNotifierHostRegistered")
        except dbus.DBusException:
            return False

    def picture(self):
        return Picture(self.display)

    def still_picture(self, seconds=0.0, but=0):
        """A picture, once at most `but` squares of the screen have changed for `seconds`."""
        last, since = [self.picture()], [time.monotonic()]

        def rests():
            before, last[0] = last[0], self.picture()
            if len(last[0].changes(before)) > but:
                since[0] = time.monotonic()
                return False
            return time.monotonic() - since[0] >= seconds
        wait_for("the screen to come to rest", rests, STARTING)
        return last[0]

    def setting(self, schema, key):
        return ast.literal_eval(self.run("gsettings", "get", schema, key).removeprefix("@as "))

    def set_option(self, schema, key, value):
        self.run("gsettings", "set", schema, key, repr(value))

    def write(self, path, text):
        """Writes a file below the user's home folder."""
        path = self.home / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path


class BusRecord:
    """The messages on the bus since the recording started."""

    def __init__(self, desktop):
        self.desktop = desktop
        desktop.start("bus-recorder", [sys.executable, Path(__file__).with_name("bus_recorder.py")])
        wait_for("the recorder of the bus", self.messages)

    def messages(self):
        lines = self.desktop.log("bus-recorder").splitlines()
        return [json.loads(line) for line in lines if line.startswith("{") and line.endswith("}")]

    def calls(self, member):
        return [message for message in self.messages()
                if message["kind"] == "call" and message["member"] == member]

    def answer(self, call):
        """The reply to a call, or None if there is none yet."""
        return next((message for message in self.messages()
                     if message["kind"] in ("return", "error")
                     and message["answers"] == call["serial"]
                     and message["to"] == call["sender"]), None)

    def notification(self, text):
        """The number of the notification with this text, once the service has replied."""
        for call in self.calls("Notify"):
            if any(text in str(argument) for argument in call["arguments"][3:5]):
                answer = self.answer(call)
                return answer["arguments"][0] if answer and answer["kind"] == "return" else None
        return None
