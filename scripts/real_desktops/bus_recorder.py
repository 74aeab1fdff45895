"""Records calls to the notification service, to status items and to their menus, and the replies: it prints
a line of JSON for each message. It only listens."""

import json

import dbus
import dbus.bus
import dbus.lowlevel
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

RULES = ["type='method_call',interface='org.freedesktop.Notifications'",
         "type='method_call',interface='org.kde.StatusNotifierItem'",
         "type='method_call',interface='com.canonical.dbusmenu'",
         "type='method_return'", "type='error'"]
KINDS = {1: "call", 2: "return", 3: "error"}


def write(_, message):
    arguments = [value if isinstance(value, (str, int)) else str(value)
                 for value in message.get_args_list()[:6]]
    print(json.dumps({
        "kind": KINDS.get(message.get_type()), "sender": message.get_sender(),
        "to": message.get_destination(), "serial": message.get_serial(),
        "answers": message.get_reply_serial(), "member": message.get_member(),
        "arguments": arguments}), flush=True)
    return dbus.lowlevel.HANDLER_RESULT_HANDLED


def main():
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus(private=True)
    bus.add_message_filter(write)
    bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus",
                      "org.freedesktop.DBus.Monitoring", "BecomeMonitor", "asu", (RULES, 0))
    print(json.dumps({"kind": "ready"}), flush=True)
    GLib.MainLoop().run()


main()
