"""Reads and operates windows as a screen reader does.

The calls go over the accessibility bus directly, so there is no client library with a stale cache.
"""

import itertools

import dbus
import dbus.bus

from .processes import process_of
from .waiting import soon, wait_for

ACCESSIBLE = "org.a11y.atspi.Accessible"
ACTION = "org.a11y.atspi.Action"
EDITABLE_TEXT = "org.a11y.atspi.EditableText"
WINDOW_ROLES = ("alert", "dialog", "frame", "window")
BUTTON_ROLES = ("push button", "button")
TEXT = "org.a11y.atspi.Text"
# Qt's menus belong to no window. Qt numbers its objects from here; removed objects leave gaps.
FIRST_OF_QT, LARGEST_GAP = 2**31, 100
FRAMES_OF_GNOME = "mutter-x11-frames"  # Its frames have the names of the windows inside them.
CHECKED, SELECTED, SENSITIVE, SHOWING = 4, 23, 24, 25


class Accessibility:
    def __init__(self, session_bus, display):
        address = session_bus.call_blocking(
            "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", "", ())
        self.bus = dbus.bus.BusConnection(address)
        self.root = Node(self.bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
        self.root.call(ACCESSIBLE, "GetChildren")  # Starts the registry before the first program.
        self.display = display

    def close(self):
        self.bus.close()

    def windows(self):
        """The windows that are on the screen."""
        return [Window(node, self.display) for application in self.root.children()
                if application.name() != FRAMES_OF_GNOME
                for node in application.children()
                if node.role().split()[0] in WINDOW_ROLES and node.has_state(SHOWING)]

    def find_window(self, name):
        return next((window for window in self.windows() if window.name == name), None)

    def window(self, name):
        """Waits for a window with that name."""
        return wait_for(f'a window "{name}"', lambda: self.find_window(name))

    def owners(self, process):
        """The bus names of a process. The bus's own list of programs is not always complete."""
        return [name for name in self.bus.list_names()
                if name.startswith(":") and process_of(self.bus, name) == process
                and Node(self.bus, name, "/org/a11y/atspi/accessible/root").role() != "gone"]

    def qt_menus(self, owner):
        """All nodes in the open menus of a Qt program."""
        gone = 0
        for number in itertools.count(FIRST_OF_QT):
            node = Node(self.bus, owner, f"/org/a11y/atspi/accessible/{number}")
            role = node.role()
            gone = gone + 1 if role == "gone" else 0
            if gone > LARGEST_GAP:
                return
            if role == "popup menu" and node.has_state(SHOWING):
                yield from node.walk()

    def dump(self):
        """Every window with its contents, one line for each node."""
        lines = []
        for window in self.windows():
            for depth, node in window.node.walk_with_depth():
                lines.append(f'{"  " * depth}{node.role()} "{node.name()}"')
        return "\n".join(lines) + "\n"


class Node:
    """An accessible object. One that no longer exists has no name, no states and no children."""

    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path

    def __eq__(self, other):
        return (self.owner, self.path) == (other.owner, other.path)

    def call(self, interface, method, signature="", *arguments):
        return self.bus.call_blocking(
            self.owner, self.path, interface, method, signature, arguments, timeout=5)

    def ask(self, method, otherwise):
        try:
            return self.call(ACCESSIBLE, method)
        except dbus.DBusException:
            return otherwise

    def name(self):
        return self.property(ACCESSIBLE, "Name", "")

    def property(self, interface, name, otherwise):
        try:
            return self.call("org.freedesktop.DBus.Properties", "Get", "ss", interface, name)
        except dbus.DBusException:
            return otherwise

    def role(self):
        return str(self.ask("GetRoleName", "gone"))

    def has_state(self, state):
        words = self.ask("GetState", (0, 0))
        return bool(int(words[state // 32]) >> state % 32 & 1)

    def children(self):
        return [Node(self.bus, owner, path) for owner, path in self.ask("GetChildren", ())]

    def walk(self):
        """This node and those below it that are on the screen."""
        return (node for _, node in self.walk_with_depth())

    def walk_with_depth(self, depth=0):
        if depth == 0 or self.has_state(SHOWING):
            yield depth, self
            for child in self.children():
                yield from child.walk_with_depth(depth + 1)

    def find(self, roles, name=None):
        """The first node with one of these roles, and with that name if one is given."""
        return next((node for node in self.walk()
                     if node.role() in roles and name in (None, node.name())), None)

    def do(self, action):
        """Performs an action without waiting: a button may reply only after its dialog has closed."""
        count = int(self.property(ACTION, "NActions", 0))
        names = [str(self.call(ACTION, "GetName", "i", index)) for index in range(count)]
        index = names.index(action)
        self.bus.call_async(
            self.owner, self.path, ACTION, "DoAction", "i", (index,), None, None)
        self.bus.flush()


class Window:
    """A window, through its accessible contents."""

    def __init__(self, node, display):
        self.node, self.display = node, display
        self.name = str(node.name())

    def is_open(self):
        return self.node.has_state(SHOWING)

    def wait_until_closed(self):
        wait_for(f'the window "{self.name}" to close', lambda: not self.is_open())

    def texts(self):
        return [str(node.name()) for node in self.node.walk()
                if node.role() == "label" and node.name()]

    def buttons(self):
        return [str(node.name()) for node in self.node.walk() if node.role() in BUTTON_ROLES]

    def press(self, title, number=0):
        """Presses a button once it is enabled; `number` chooses among several with the same title."""
        def pressable():
            nodes = [node for node in self.node.walk()
                     if node.role() in BUTTON_ROLES and node.name() == title]
            node = nodes[number] if number < len(nodes) else None
            return node if node and node.has_state(SENSITIVE) else None
        wait_for(f'a button "{title}" in "{self.name}"', pressable).do("Press")

    def toggle(self, title):
        wait_for(f'a switch "{title}"', lambda: self.node.find(("check box",), title)).do("Toggle")

    def is_checked(self, title):
        return self.node.find(("check box",), title).has_state(CHECKED)

    def answer(self, title):
        """Presses a button that closes the window."""
        self.press(title)
        self.wait_until_closed()

    def answer_by_key(self, key):
        """Presses a key that closes the window."""
        self.focus()
        self._press_until(lambda: not self.is_open(), key)

    def choices(self):
        """The items of the window's pop-up."""
        return [str(node.name()) for node in self._popup_items()]

    def choice(self):
        return str(self._popup().name())

    def choose(self, item):
        """Chooses from the window's pop-up as a user does with the keyboard.

        A window that came up by itself may ignore the first keys, in case they were meant for another
        program, so a key that has no effect is pressed again.
        """
        if self.choice() == item:
            return
        self.focus()
        self._popup().do("ShowMenu")
        self.choose_from_list(item)

    def choose_by_arrow(self, key, item):
        """Chooses an item by an arrow key, with the list closed."""
        self.focus()
        self._press_until(lambda: self.choice() == item, key)

    def open_list(self, *keys):
        """Opens the pop-up's list by a shortcut."""
        self.focus()
        self._press_until(self.display.pop_ups, *keys)

    def choose_from_list(self, item):
        """Chooses from the pop-up's open list by the keyboard."""
        order = self.choices()
        while (selected := wait_for("a selected item", self._selected)) != item:
            self.display.press_key("Down" if order.index(selected) < order.index(item) else "Up")
            soon(lambda: self._selected() not in (None, selected), 0.5)
        self.display.press_key("Return")
        wait_for(f'the choice "{item}"', lambda: self.choice() == item)

    def _press_until(self, condition, *keys):
        """Presses keys together, and again if they came too early to have an effect."""
        def happened():
            self.display.press_keys(*keys)
            return soon(condition, 1)
        wait_for(f"what {'+'.join(keys)} does", happened)

    def type(self, field, text):
        """Puts text into the field with that label."""
        node = wait_for(
            f'a field "{field}" in "{self.name}"', lambda: self.node.find(("text",), field))
        node.call(EDITABLE_TEXT, "SetTextContents", "s", text)

    def field_text(self):
        """The text in the window's text field."""
        node = wait_for(f'a field in "{self.name}"', lambda: self.node.find(("text",)))
        return str(node.call(TEXT, "GetText", "ii", 0, -1))

    def focus(self):
        """Waits until the window has the keyboard focus."""
        self.display.wait_for_keyboard(self.id())

    def id(self):
        """Its window ID on the X display."""
        process = process_of(self.node.bus, self.node.owner)
        return wait_for(
            f'the window of "{self.name}"', lambda: self.display.window_of(self.name, process))

    def _popup(self):
        return wait_for(f'a pop-up in "{self.name}"', lambda: self.node.find(("combo box",)))

    def _popup_items(self):
        lists = (node for node in self._popup().children() if node.role() == "list")
        return [item for one in lists for item in one.children()]

    def _selected(self):
        return next(
            (str(item.name()) for item in self._popup_items() if item.has_state(SELECTED)), None)
