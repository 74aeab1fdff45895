"""The checks for each desktop, in the order in which a user encounters the features."""

import time
import traceback
from pathlib import Path

import dbus

from virtual_desktop import StandInDaw, StemvaultConnect, TimedOut, Tray, wait_for

from .screen import SQUARE, changed_areas
from .session import Impossible

NOTIFICATIONS = "org.freedesktop.Notifications"
HOTKEY = ("Control_L", "Super_L", "y")
CURSOR = 20  # Squares that a blinking cursor, or something as small, covers at most.
VISIBLE = 0.3  # The least contrast of a visible icon.
# The calls that a desktop makes to a clicked item.
OPENING = ("Activate", "ContextMenu", "AboutToShow", "AboutToShowGroup", "Event", "EventGroup",
           "GetLayout")
NEAR = 80  # Pixels between a click and the menu that it opens.
PROGRAM = Path("/usr/bin/stemvault-connect")
COURIER = Path("/usr/libexec/stemvault-connect/courier")
ROWS = ["Preferences…", "Check for Updates…", "-", "Quit Stemvault Connect"]


class Checks:
    def __init__(self, desktop, place):
        self.desktop, self.place = desktop, place
        self.results = place / "results"
        self.outcomes = []
        self.version = desktop.version()
        self.song = desktop.home / "Sessions/Big Song"
        self.client = desktop.home / "Stemvault/Client A"
        for folder in (self.song, self.client):
            folder.mkdir(parents=True)

    def run_all(self):
        for check in (self.tray_item, self.menu, self.prompt, self.return_adds, self.notification,
                      self.courier_error, self.entry, self.preferences_light, self.hotkey_page,
                      self.hotkey, self.preferences_live, self.preferences_dark,
                      self.tray_item_again):
            self.run(check)

    def run(self, check):
        start = time.monotonic()
        try:
            result, text = "passed", check() or "yes"
        except Impossible as reason:
            result, text = "impossible", str(reason)
        except Exception as failure:  # The other checks must still run.
            result, text = "failed", str(failure) or type(failure).__name__
            self.keep_evidence(check.__name__)
        seconds = time.monotonic() - start
        self.outcomes.append({"check": check.__name__, "result": result, "text": text})
        print(f"  {result:10} {check.__name__.replace('_', ' '):24} {seconds:5.1f} s  {text}", flush=True)

    def keep_evidence(self, name):
        folder = self.results / f"failed-{name}"
        folder.mkdir(exist_ok=True)
        (folder / "error.txt").write_text(traceback.format_exc())
        try:
            self.desktop.keep_evidence(folder)
        except Exception:
            (folder / "no-evidence.txt").write_text(traceback.format_exc())

    # The tray.

    def tray_item(self):
        """Something new appears in the panel, and a click on it reaches the program."""
        without = self.desktop.still_picture()
        self.desktop.display.take_picture(self.results / "without.png")
        self.connect = StemvaultConnect(self.desktop, PROGRAM, folders=[self.client])
        self.tray = Tray(self.desktop)
        self.find_icon(without)

    def find_icon(self, without, panel=None):
        """Searches what is new since a picture without it. A panel may move other icons to make room."""
        self.item = self.tray.item()
        tried = []

        def found():
            now = self.desktop.still_picture(1)
            tried[:] = changed_areas(now.changes(without, panel), gap=1)
            places = [place for area in tried for place in places_of_icons(area)]
            return next((place for place in places if self.click_reaches_program(place)), None)
        try:
            self.icon = wait_for("an icon in the panel", found, 30)
        except TimedOut:
            raise AssertionError(f"no icon in the panel; what is new there: {tried}") from None
        contrast = self.desktop.still_picture().contrast(self.icon)
        assert contrast > VISIBLE, f"the icon does not stand out from the panel ({contrast:.0%} contrast)"

    def click_reaches_program(self, place):
        before, said = self.desktop.still_picture(), len(self.desktop.record.messages())
        self.click_in(place)
        self.menu_area = self.opened_menu(before)
        if self.menu_area:
            self.desktop.display.press_key("Escape")
        self.desktop.put_pointer_aside()
        asked = [message["member"] for message in self.desktop.record.messages()[said:]
                 if message["kind"] == "call" and message["member"] in OPENING]
        if self.menu_area and not asked:  # The menu belongs to another item.
            self.click_in(place)
        return bool(asked)

    def click_in(self, place):
        self.desktop.display.click_at(place[0] + place[2] // 2, place[1] + place[3] // 2)

    def opened_menu(self, before):
        try:
            return wait_for("a menu", lambda: next(
                (area for area in changed_areas(self.desktop.still_picture().changes(before))
                 if area[2] > 100 and area[3] > 60), None), 5)
        except TimedOut:
            return None

    def menu(self):
        """The menu opens at the click, with the right rows."""
        assert self.menu_area, "none opened"
        click = [self.icon[axis] + self.icon[axis + 2] // 2 for axis in (0, 1)]
        start, size = self.menu_area[:2], self.menu_area[2:]
        distance = max(max(start[axis] - click[axis], click[axis] - start[axis] - size[axis], 0)
                       for axis in (0, 1))
        assert distance <= NEAR, f"it opened {distance} pixels away from the click"
        titles = self.item.titles()
        assert all(row in titles for row in ROWS), titles

    # A bounce.

    def prompt(self):
        """The prompt comes up in front of a focused window, and has the keyboard focus."""
        session = self.song / "Big Song.rpp"
        session.write_text("<REAPER_PROJECT>\n")
        empty = self.desktop.still_picture(1, but=CURSOR)
        self.daw = StandInDaw(self.desktop, self.place / "bin/stand-in-daw", session,
                              environment={"QT_QPA_PLATFORM": "xcb"})
        window = self.desktop.display.window_of("Big Song", self.daw.process.pid)
        self.desktop.display.activate(window)
        self.wait_until_seen(window, empty)
        self.connect.wait_until_it_watches(self.song)
        without = self.desktop.still_picture(1, but=CURSOR)
        self.daw.bounce(self.song / "Big Song - Mix 1.wav")
        self.asked = self.connect.prompt("Big Song - Mix 1.wav")
        self.asked.focus()
        self.wait_until_seen(self.asked.id(), without)
        self.desktop.display.take_picture(self.results / "picture.png")

    def wait_until_seen(self, window, without):
        """Waits until most of the window's area looks different from before."""
        area = self.desktop.display.frame(window)
        squares = area[2] * area[3] // SQUARE ** 2
        wait_for("the window on the screen", lambda:
                 len(self.desktop.still_picture(0.5, but=CURSOR).changes(without, area)) > squares // 2)

    def return_adds(self):
        self.press_return(self.asked)
        wait_for("the copy", (self.client / "Big Song - Mix 1.wav").exists)

    def press_return(self, prompt):
        """Presses Return; if that does nothing, the button, so that the next checks can run."""
        try:
            prompt.answer_by_key("Return")
        except AssertionError:
            prompt.answer("Add")
            raise

    def notification(self):
        return self.wait_for_bubble("Big Song - Mix 1.wav → Client A")

    def courier_error(self):
        missing = self.desktop.home / "Gone.wav"
        self.desktop.start("courier", [COURIER, "add", missing], {
            "DBUS_SESSION_BUS_ADDRESS": self.desktop.environment["DBUS_SESSION_BUS_ADDRESS"]})
        return self.wait_for_bubble("Add to Stemvault")

    def wait_for_bubble(self, text):
        """Waits until a notification is accepted, and checks that closing it changes the screen."""
        number = wait_for(f'a notification "{text}"', lambda: self.desktop.record.notification(text))
        # The service may reply before it shows the notification.
        shown = self.desktop.still_picture(1, but=CURSOR)
        try:
            self.desktop.call(NOTIFICATIONS, "/org/freedesktop/Notifications", NOTIFICATIONS,
                              "CloseNotification", "u", number)
        except dbus.DBusException:  # Refused for another program's notification, which closes by itself.
            pass
        wait_for("the notification to have been on the screen", lambda: any(
            area[2] > 100 and area[3] > 30
            for area in changed_areas(self.desktop.picture().changes(shown))))

    # Light and dark.

    def preferences_light(self):
        self.open_preferences()
        self.wait_for_look("light")

    def preferences_live(self):
        self.open_preferences()
        for look in ("dark", "light"):
            self.desktop.set_appearance(look)
            self.wait_for_look(look)

    def preferences_dark(self):
        self.connect.quit()
        self.desktop.set_appearance("dark")
        self.connect.process = self.connect.start()
        self.open_preferences()
        self.wait_for_look("dark")
        self.desktop.display.take_picture(self.results / "dark.png")

    def tray_item_again(self):
        """The item is in the panel after every start, and visible if the desktop is dark now."""
        for _ in range(3):
            self.connect.quit()
            without = self.desktop.still_picture(1)
            self.connect.process = self.connect.start()
            self.find_icon(without, (0, self.icon[1], without.width, self.icon[3]))

    def open_preferences(self):
        self.connect.start_again()
        self.preferences = self.connect.window("Stemvault Connect")
        self.preferences.focus()

    def wait_for_look(self, look):
        def seen():
            picture = self.desktop.picture()
            brightness = picture.brightness(self.desktop.display.frame(self.preferences.id()))
            return brightness > 0.6 if look == "light" else brightness < 0.4
        wait_for(f"{look} preferences", seen)

    # The services.

    def entry(self):
        """The file manager's entry adds the selection."""
        selected = self.desktop.made_folder("selected")
        (selected / "Old Mix.wav").write_bytes(b"RIFF")
        self.manager = self.desktop.open_file_manager(selected)
        self.manager.choose(*self.desktop.way_to_entry, "Add to Stemvault")
        self.press_return(self.connect.prompt("Old Mix.wav"))
        wait_for("the copy", (self.client / "Old Mix.wav").exists)

    def hotkey_page(self):
        """The button opens the desktop's own page, which lists the service without a key."""
        before = self.desktop.still_picture()
        self.preferences.press("Set Up Hotkey…")
        wait_for("the desktop's page for shortcuts", lambda: any(
            area[2] > 300 and area[3] > 200
            for area in changed_areas(self.desktop.picture().changes(before))))
        try:
            wait_for("its right part", self.desktop.shows_shortcuts)
            wait_for('"Add to Stemvault" among the shortcuts', self.desktop.shortcut)
        finally:
            self.desktop.still_picture(2, but=CURSOR)
            self.desktop.display.take_picture(self.results / "hotkey.png")
            (self.results / "hotkey.txt").write_text(self.desktop.accessibility.dump())
            self.desktop.close_shortcuts_page()

    def hotkey(self):
        """A key assigned as the desktop's page would assign it adds the selection."""
        entry = self.desktop.shortcut()
        assert entry is not None, "it is not among the desktop's shortcuts"
        self.desktop.bind(entry)
        self.desktop.display.close_window(self.preferences.id())  # It may hide the file manager.
        self.preferences.wait_until_closed()
        (self.client / "Old Mix.wav").unlink(missing_ok=True)
        wait_for("a prompt after the hotkey", self.hotkey_asks, 60)
        self.press_return(self.connect.prompt("Old Mix.wav"))
        wait_for("the copy", (self.client / "Old Mix.wav").exists)

    def hotkey_asks(self):
        """No desktop reports when a new key takes effect; until then pressing it does nothing."""
        self.manager.select_all()
        if self.desktop.session_type == "wayland":  # There only copied files can be read.
            self.desktop.still_picture(1, but=CURSOR)
            self.desktop.display.press_keys("Control_L", "c")
        self.desktop.still_picture(1, but=CURSOR)
        self.desktop.display.press_keys(*HOTKEY)
        try:
            return wait_for("a prompt", lambda: self.desktop.accessibility.find_window(
                "Bounce detected"), 10)
        except TimedOut:
            return None


def places_of_icons(area):
    """Where an icon may be in a changed area of the panel: from the right, as others may have moved left."""
    left, top, width, height = area
    if min(width, height) < 12 or height > 64:  # A digit of the clock, or a window.
        return []
    if width <= 64:
        return [area]
    return [(end - height, top, height, height) for end in range(left + width, left, -height)]
