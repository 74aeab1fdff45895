"""The part of the desktop portal that reports whether windows should be light or dark."""

import dbus
import dbus.service
from bus_service import serve

SETTINGS = "org.freedesktop.portal.Settings"
GROUP, KEY = "org.freedesktop.appearance", "color-scheme"


class AppearancePortal(dbus.service.Object):
    scheme = 1

    @dbus.service.method(SETTINGS, in_signature="ss", out_signature="v")
    def Read(self, group, key):
        if (group, key) != (GROUP, KEY):
            raise dbus.DBusException(name="org.freedesktop.portal.Error.NotFound")
        return dbus.UInt32(self.scheme, variant_level=2)  # Wrapped twice, as by the real portal.

    @dbus.service.method("local.VirtualDesktop", in_signature="u")
    def Choose(self, scheme):
        """Changes the scheme, as the user does in the settings: 1 is dark, 2 light, 0 neither."""
        self.scheme = scheme
        self.SettingChanged(GROUP, KEY, dbus.UInt32(scheme, variant_level=1))

    @dbus.service.signal(SETTINGS, signature="ssv")
    def SettingChanged(self, group, key, value):
        pass


serve("org.freedesktop.portal.Desktop",
      lambda bus: AppearancePortal(bus, "/org/freedesktop/portal/desktop"))
