"""A notification service that shows nothing and writes each call to standard output as JSON.

The argument is a list of capabilities (such as "body,actions"), or "silent" to accept calls without
replying. With "asks-sender" in the list it drops notifications of senders that have exited, as GNOME's does.
"""

import json
import sys
import time

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = "org.freedesktop.Notifications"


class NotificationServer(dbus.service.Object):
    def __init__(self, bus, mode):
        super().__init__(bus, "/org/freedesktop/Notifications")
        self.mode = mode
        self.count = 0

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u",
                         async_callbacks=("answer", "fail"), sender_keyword="sender")
    def Notify(self, application, replaces, icon, summary, body, actions, hints, timeout, answer, fail,
               sender):
        if "asks-sender" in self.mode and not self.connection.name_has_owner(sender):
            return
        self.count += 1
        print(json.dumps({
            "id": self.count, "time": time.monotonic(), "application": application,
            "replaces": replaces, "icon": icon, "summary": summary, "body": body, "actions": actions,
            "hints": {key: plain(value) for key, value in hints.items()}, "timeout": timeout}),
            flush=True)
        if self.mode != "silent":
            answer(self.count)

    @dbus.service.method(NAME, out_signature="as")
    def GetCapabilities(self):
        return dbus.Array(self.mode.split(","), signature="s")

    @dbus.service.method(NAME, out_signature="ssss")
    def GetServerInformation(self):
        return "virtual desktop", "none", "1", "1.2"

    @dbus.service.method(NAME, in_signature="u")
    def CloseNotification(self, number):
        self.NotificationClosed(number, 3)

    @dbus.service.signal(NAME, signature="uu")
    def NotificationClosed(self, number, reason):
        pass

    @dbus.service.signal(NAME, signature="us")
    def ActionInvoked(self, number, action):
        pass


def plain(value):
    return value if isinstance(value, (str, int, float)) else str(value)


def main():
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    server = NotificationServer(bus, sys.argv[1])
    name = dbus.service.BusName(NAME, bus)
    GLib.MainLoop().run()
    del server, name


main()
