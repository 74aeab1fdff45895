"""The virtual desktop with all installed applications, and a home folder on a disk."""

import shutil

from virtual_desktop import VirtualDesktop, wait_for


KEYS = {"/": "slash", ".": "period", " ": "space", "-": "minus"}


class AudioDesktop(VirtualDesktop):
    """Audio programs do not join the accessibility bus: a busy one would delay every query for windows."""

    QUIET = {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": None, "NO_AT_BRIDGE": "1", "QT_ACCESSIBILITY": "0",
             "AT_SPI_BUS_ADDRESS": "unix:path=/nowhere"}

    def __init__(self, results):
        self.results = results
        super().__init__()
        (results / "home").mkdir()
        self.live_in(results / "home")

    def _shared_data(self):
        return "/usr/local/share:/usr/share"

    def start_audio(self, name, command, environment=None, **options):
        """Starts an audio program. Its output goes to the log of that name."""
        return self.start(name, command, self.QUIET | (environment or {}), **options)

    def window_with(self, text):
        """A window whose title contains the text; for an empty text, one without a title."""
        return next((window for window, title in self.display.windows().items()
                     if (text in title if text else not title)), None)

    def open_by_dialog(self, window, dialog_title, path):
        """Presses Ctrl+O and types the path, as a user does."""
        self.display.activate(wait_for(f"the window of {window}", lambda: self.window_with(window)))
        self.display.press_keys("Control_L", "o")
        dialog = wait_for("the dialog for opening", lambda: self.window_with(dialog_title))
        self.display.activate(dialog)
        self.type_text(str(path))
        self.display.press_key("Return")

    def type_text(self, text):
        for letter in text:
            name = KEYS.get(letter, letter)
            self.display.press_keys(*(["Shift_L", name] if letter.isupper() else [name]))

    def __exit__(self, *_):
        shutil.copytree(self.logs, self.results / "logs", dirs_exist_ok=True)
        super().__exit__()
        shutil.rmtree(self.home, ignore_errors=True)
