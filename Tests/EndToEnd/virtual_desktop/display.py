"""The X display: focus, keys, the mouse, and pictures."""

import collections
import struct
import zlib

from Xlib import X, XK, display, error
from Xlib.ext import xtest
from Xlib.protocol import event

from .waiting import wait_for


class Display:
    def __init__(self, name):
        self.name = name
        self.connection = display.Display(name)
        self.screen = self.connection.screen()
        self.root = self.screen.root

    def close(self):
        self.connection.close()

    def has_window_manager(self):
        return bool(self._property(self.root, "_NET_SUPPORTING_WM_CHECK"))

    def active_window(self):
        """The window that has the keyboard focus; 0 if none has it."""
        value = self._property(self.root, "_NET_ACTIVE_WINDOW")
        return value[0] if value else 0

    def windows(self):
        """The programs' windows and their titles, the oldest first."""
        ids = self._property(self.root, "_NET_CLIENT_LIST") or []
        return {window: self._title(window) for window in ids}

    def pop_ups(self):
        """The menus and similar windows on the screen, which bypass the window manager."""
        found = []
        for window in self.root.query_tree().children:
            try:
                shown = window.get_attributes()
                if shown.override_redirect and shown.map_state == X.IsViewable \
                        and window.get_geometry().width > 100:
                    found.append(window.id)
            except error.XError:  # The window was closed.
                pass
        return found

    def window_of(self, title, pid):
        """The window of a process by the start of its title, as a program may append its name."""
        for window, its_title in self.windows().items():
            if its_title.startswith(title) and self._property(window, "_NET_WM_PID") == [pid]:
                return window
        return None

    def activate(self, window):
        """Does what a click on the window's title does, and waits until it has the focus."""
        source_is_user = 2
        self._tell_root(self._window(window), "_NET_ACTIVE_WINDOW", source_is_user, X.CurrentTime)
        self.wait_for_keyboard(window)

    def wait_for_keyboard(self, window):
        wait_for(f"the keyboard to be with window {window:#x}",
                 lambda: self.active_window() == window)

    def press_key(self, name):
        self.press_keys(name)

    def press_keys(self, *names):
        """Presses the keys together, as one shortcut."""
        codes = [self.connection.keysym_to_keycode(XK.string_to_keysym(name)) for name in names]
        for code in codes:
            xtest.fake_input(self.connection, X.KeyPress, code)
        for code in reversed(codes):
            xtest.fake_input(self.connection, X.KeyRelease, code)
        self.connection.sync()

    def move_pointer(self, x, y):
        self.root.warp_pointer(x, y)
        self.connection.sync()

    def move_pointer_aside(self):
        """Moves the pointer out of the middle of the screen, where it would hover over new windows."""
        self.move_pointer(self.screen.width_in_pixels - 1, self.screen.height_in_pixels - 1)

    def move_pointer_into(self, window):
        """Moves the pointer to where a menu opens that is opened by its key."""
        left, top, width, height = self.frame(window)
        self.move_pointer(left + width // 2, top + height // 3)

    def click(self, window, button=1):
        """Presses a button of the mouse in the middle of a window."""
        size = self._window(window).get_geometry()
        corner = self.root.translate_coords(self._window(window), 0, 0)
        self.click_at(corner.x + size.width // 2, corner.y + size.height // 2, button)

    def click_at(self, x, y, button=1):
        self.move_pointer(x, y)
        for kind in (X.ButtonPress, X.ButtonRelease):
            xtest.fake_input(self.connection, kind, button)
        self.connection.sync()

    def embedded_window(self, outer):
        """The first visible window that another program has embedded in a window."""
        for child in self._window(outer).query_tree().children:
            if self._property(child, "_XEMBED_INFO") \
                    and child.get_attributes().map_state == X.IsViewable:
                return child.id
            if found := self.embedded_window(child.id):
                return found
        return None

    def publish_theme(self, name):
        """Publishes the name of the GTK theme, as a desktop's settings manager does (XSETTINGS)."""
        manager, selection = self._settings_manager(), self._atom("_XSETTINGS_S0")
        key, value = b"Net/ThemeName", name.encode()

        def padded(text):
            return text + bytes(-len(text) % 4)
        content = struct.pack("<IIIBBH", 0, 1, 1, 1, 0, len(key)) + padded(key) \
            + struct.pack("<II", 1, len(value)) + padded(value)
        kind = self._atom("_XSETTINGS_SETTINGS")
        manager.change_property(kind, kind, 8, content)
        if self.connection.get_selection_owner(selection) != manager:
            manager.set_selection_owner(selection, X.CurrentTime)
            self.root.send_event(
                event.ClientMessage(window=self.root, client_type=self._atom("MANAGER"),
                                    data=(32, [X.CurrentTime, selection, manager.id, 0, 0])),
                event_mask=X.StructureNotifyMask)
        self.connection.sync()

    def _settings_manager(self):
        if not hasattr(self, "settings_manager"):
            self.settings_manager = self.root.create_window(
                -1, -1, 1, 1, 0, X.CopyFromParent, X.InputOnly)
        return self.settings_manager

    def brightness(self, window):
        """The brightness of the most frequent colour in a window, from 0 to 255."""
        pixels = self.pixels(self.frame(window))
        colours = collections.Counter(pixels[at:at + 3] for at in range(0, len(pixels), 4))
        return sum(colours.most_common(1)[0][0]) // 3

    def watch_startups(self):
        """Starts listening to startup notifications of programs. Returns a function that waits for
        the next such message and returns it."""
        self.root.change_attributes(event_mask=X.PropertyChangeMask)
        self.connection.sync()
        kinds = {self._atom("_NET_STARTUP_INFO_BEGIN"), self._atom("_NET_STARTUP_INFO")}
        received = bytearray()

        def complete():
            while b"\0" not in received and self.connection.pending_events():
                message = self.connection.next_event()
                if message.type & 0x7f == X.ClientMessage and message.client_type in kinds:
                    received.extend(message.data[1])
            return b"\0" in received

        def next_message():
            wait_for("a message about a start", complete)
            text, received[:] = bytes(received).split(b"\0")[0], b""
            return text.decode()
        return next_message

    def show_workspace(self, number):
        self._tell_root(self.root, "_NET_CURRENT_DESKTOP", number, X.CurrentTime)
        wait_for(f"workspace {number}",
                 lambda: self._property(self.root, "_NET_CURRENT_DESKTOP") == [number])

    def close_window(self, window):
        """Does what the close button in its frame does."""
        source_is_user = 2
        self._tell_root(self._window(window), "_NET_CLOSE_WINDOW", X.CurrentTime, source_is_user)

    def minimise(self, window):
        iconic = 3
        self._tell_root(self._window(window), "WM_CHANGE_STATE", iconic)
        wait_for("the window to go", lambda: self.active_window() != window)

    def set_background(self, colour):
        self.root.change_attributes(background_pixel=colour)
        self.root.clear_area()
        self.connection.sync()

    def take_picture(self, path, window=None):
        """Writes the screen, or the visible part of one window and its frame, as a PNG."""
        area = self.frame(window) if window else self._whole()
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(png(area[2], area[3], self.pixels(area)))

    def pixels(self, area=None):
        """The pixels of the screen, or of a part of it."""
        return self.root.get_image(*(area or self._whole()), X.ZPixmap, 0xffffffff).data

    def _whole(self):
        return 0, 0, self.screen.width_in_pixels, self.screen.height_in_pixels

    def frame(self, window):
        """x, y, width and height of a window, including the window manager's frame."""
        outermost = self._window(window)
        while (parent := outermost.query_tree().parent) and parent.id != self.root.id:
            outermost = parent
        geometry = outermost.get_geometry()
        border = 2 * geometry.border_width
        left, top = max(0, geometry.x), max(0, geometry.y)
        width = min(geometry.width + border, self.screen.width_in_pixels - left)
        height = min(geometry.height + border, self.screen.height_in_pixels - top)
        return left, top, width, height

    def _tell_root(self, window, message, *numbers):
        """Sends the window manager a request about a window."""
        data = [*numbers, 0, 0, 0, 0, 0][:5]
        self.root.send_event(
            event.ClientMessage(
                window=window, client_type=self._atom(message), data=(32, data)),
            event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self.connection.flush()

    def _window(self, window):
        return self.connection.create_resource_object("window", window)

    def _atom(self, name):
        return self.connection.intern_atom(name)

    def _property(self, window, name):
        try:
            window = window if hasattr(window, "get_full_property") else self._window(window)
            found = window.get_full_property(self._atom(name), X.AnyPropertyType)
            return list(found.value) if found else None
        except error.XError:  # The window was closed.
            return None

    def _title(self, window):
        title = self._property(window, "_NET_WM_NAME") or []
        return bytes(title).decode(errors="replace")


def png(width, height, blue_green_red):
    """Converts the pixels of an X image, 32 bits each, to a PNG file."""
    pixels = bytearray(width * height * 3)
    for channel in range(3):
        pixels[channel::3] = blue_green_red[2 - channel::4]
    rows = b"".join(b"\0" + pixels[row * width * 3:(row + 1) * width * 3] for row in range(height))

    def chunk(kind, content):
        checksum = zlib.crc32(kind + content)
        return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", checksum)

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))
