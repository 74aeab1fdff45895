"""A panel's side of the tray: the watcher that status items register with, and a host of them.

Prints a line when an item has a new icon.
"""

import dbus
import dbus.service
from bus_service import serve

WATCHER = "org.kde.StatusNotifierWatcher"
PROPERTIES = "org.freedesktop.DBus.Properties"
DECLARED = "".join(f'<property name="{name}" type="{kind}" access="read"/>' for name, kind in (
    ("IsStatusNotifierHostRegistered", "b"), ("RegisteredStatusNotifierItems", "as"),
    ("ProtocolVersion", "i")))


class TrayHost(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, "/StatusNotifierWatcher")
        self.bus, self.items = bus, []
        bus.add_signal_receiver(
            lambda: print("new icon", flush=True), "NewIcon", "org.kde.StatusNotifierItem")

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender):
        """Accepts a bus name, or the path of an object of the sender."""
        item = f"{sender}{service}" if service.startswith("/") else f"{service}/StatusNotifierItem"
        if item in self.items:
            return
        self.items.append(item)
        self.bus.watch_name_owner(item.partition("/")[0], lambda owner: owner or self.forget(item))
        self.StatusNotifierItemRegistered(item)

    def forget(self, item):
        if item in self.items:
            self.items.remove(item)
            self.StatusNotifierItemUnregistered(item)

    @dbus.service.method(WATCHER, in_signature="s")
    def RegisterStatusNotifierHost(self, service):
        self.StatusNotifierHostRegistered()

    @dbus.service.method(PROPERTIES, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(PROPERTIES, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {"IsStatusNotifierHostRegistered": True, "ProtocolVersion": dbus.Int32(0),
                "RegisteredStatusNotifierItems": dbus.Array(self.items, signature="s")}

    @dbus.service.method("org.freedesktop.DBus.Introspectable", out_signature="s",
                         path_keyword="path", connection_keyword="connection")
    def Introspect(self, path, connection):
        """Adds the properties, which the library omits and some programs query."""
        mark = f'<interface name="{WATCHER}">'
        return super().Introspect(path, connection).replace(mark, mark + DECLARED)

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemRegistered(self, item):
        pass

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemUnregistered(self, item):
        pass

    @dbus.service.signal(WATCHER)
    def StatusNotifierHostRegistered(self):
        pass


serve(WATCHER, TrayHost)
