"""The part of the desktop portal that says that windows are to be dark."""

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

SETTINGS = "org.freedesktop.portal.Settings"


class AppearancePortal(dbus.service.Object):
    @dbus.service.method(SETTINGS, in_signature="ss", out_signature="v")
    def Read(self, group, key):
        if (group, key) != ("org.freedesktop.appearance", "color-scheme"):
            raise dbus.DBusException(name="org.freedesktop.portal.Error.NotFound")
        return dbus.UInt32(1, variant_level=1)


def main():
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    portal = AppearancePortal(bus, "/org/freedesktop/portal/desktop")
    name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
    GLib.MainLoop().run()
    del portal, name


main()
