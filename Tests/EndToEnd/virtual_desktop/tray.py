"""The tray from the panel's side: its items, and the menu of each."""

import dbus

from .waiting import wait_for

ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"


class Tray:
    """`start` and `end` let the panel appear late, or again."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.bus = desktop.bus

    def start(self):
        self.desktop.start_service("tray_host", "org.kde.StatusNotifierWatcher")
        return self

    def end(self):
        process = self.desktop.processes["tray_host"]
        process.terminate()
        process.wait()

    def item(self):
        """Waits for the program's own item to respond. The toolkit may briefly offer another one, if the
        panel starts just when the toolkit checks for a tray."""
        return wait_for("the program's item", lambda: next(
            (item for item in self._items() if item.has("Id", "net.stemvault.Connect")), None))

    def new_icons(self):
        """How often the panel was asked to read an icon again."""
        return self.desktop.log("tray_host").count("new icon\n")

    def has_item(self):
        return bool(self._items())

    def _items(self):
        try:
            items = self.bus.call_blocking(
                "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                "org.freedesktop.DBus.Properties", "Get", "ss",
                ("org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems"))
        except dbus.DBusException:
            return []
        return [TrayItem(self.bus, *owner_and_path(str(item))) for item in items]


def owner_and_path(item):
    """Splits an item's name. GNOME puts an @ before the path, and omits the default path."""
    owner, _, path = item.partition("/")
    return owner.rstrip("@"), path or "StatusNotifierItem"


class TrayItem:
    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, "/" + path

    def property(self, name):
        return self._call(self.path, "org.freedesktop.DBus.Properties", "Get", "ss", ITEM, name)

    def properties(self):
        """All properties of the item and of its menu, as panels read them."""
        return [self._call(path, "org.freedesktop.DBus.Properties", "GetAll", "s", interface)
                for path, interface in ((self.path, ITEM), (str(self.property("Menu")), MENU))]

    def has(self, name, value):
        try:
            return self.property(name) == value
        except dbus.DBusException:  # The item no longer exists.
            return False

    def scroll(self):
        self._call(self.path, ITEM, "Scroll", "is", 1, "vertical")

    def activate(self, method="Activate", x=10, y=10):
        self._call(self.path, ITEM, method, "ii", x, y)

    def pass_token(self, token):
        """Passes an activation token, as a panel does before a click."""
        self._call(self.path, ITEM, "ProvideXdgActivationToken", "s", token)

    def open_menu(self):
        """Opens the menu like a panel that announces this by AboutToShow, and returns its rows."""
        self._menu("AboutToShow", "i", 0)
        return self.rows()

    def open_menu_by_event(self):
        """Opens the menu like a panel that only sends the event "opened"."""
        self._menu("Event", "isvu", 0, "opened", dbus.String("", variant_level=1), 0)

    def open_menu_in_groups(self, *numbers):
        """Opens the menu like a panel that groups its calls. Returns the numbers of changed and of
        unknown rows."""
        return self._menu("AboutToShowGroup", "ai", numbers)

    def choose_in_groups(self, *numbers):
        """Chooses rows by their numbers. Returns the unknown ones."""
        return self._menu("EventGroup", "a(isvu)", [
            (number, "clicked", dbus.String("", variant_level=1), 0) for number in numbers])

    def group_properties(self, *numbers):
        return [(int(number), dict(properties)) for number, properties in
                self._menu("GetGroupProperties", "aias", numbers, dbus.Array([], signature="s"))]

    def row(self, number):
        """The properties of one row."""
        _, (_, properties, _) = self._menu(
            "GetLayout", "iias", number, -1, dbus.Array([], signature="s"))
        return dict(properties)

    def rows(self):
        """The properties of each row, including its number."""
        _, (_, _, children) = self._menu("GetLayout", "iias", 0, -1, dbus.Array([], signature="s"))
        return [dict(properties, id=int(number)) for number, properties, _ in children]

    def titles(self):
        """The titles of the visible rows, with a dash for a separator."""
        return ["-" if row.get("type") == "separator" else str(row["label"])
                for row in self.open_menu() if row.get("visible", True)]

    def choose(self, title):
        row = next(row for row in self.open_menu() if row.get("label") == title)
        self._menu("Event", "isvu", row["id"], "clicked", dbus.String("", variant_level=1), 0)

    def _menu(self, method, signature, *arguments):
        return self._call(str(self.property("Menu")), MENU, method, signature, *arguments)

    def _call(self, path, interface, method, signature, *arguments):
        return self.bus.call_blocking(
            self.owner, path, interface, method, signature, arguments, timeout=5)
