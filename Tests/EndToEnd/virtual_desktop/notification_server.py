"""A notification service that shows nothing and writes each call to standard output as JSON.

The argument is a list of capabilities (such as "body,actions"). With "asks-sender" in the list it
drops notifications of senders that have exited, as GNOME's does.
"""

import json
import sys

import dbus
import dbus.service
from bus_service import serve

NAME = "org.freedesktop.Notifications"


class NotificationServer(dbus.service.Object):
    def __init__(self, bus, mode):
        super().__init__(bus, "/org/freedesktop/Notifications")
        self.mode = mode
        self.count = 0

    @dbus.service.method(NAME, in_signature="susssasa{sv}i", out_signature="u", sender_keyword="sender")
    def Notify(self, application, replaces, icon, summary, body, actions, hints, timeout, sender):
        if "asks-sender" not in self.mode or self.connection.name_has_owner(sender):
            self.count += 1
            print(json.dumps({"summary": summary, "body": body}), flush=True)
        return self.count

    @dbus.service.method(NAME, out_signature="as")
    def GetCapabilities(self):
        return dbus.Array(self.mode.split(","), signature="s")


serve(NAME, lambda bus: NotificationServer(bus, sys.argv[1]))
