"""What every service of the virtual desktop does that is a program of its own."""

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib


def serve(name, make_object):
    """Owns a name on the session bus, with the object that is made there, until the process is killed."""
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    kept = make_object(bus), dbus.service.BusName(name, bus)
    GLib.MainLoop().run()
    del kept
