"""A desktop without a screen, for tests, pictures and demonstrations.

    with VirtualDesktop() as desktop:
        desktop.start("program", ["/usr/bin/some-program"])
        dialog = desktop.accessibility.window("Some question")
        dialog.press("Yes")

It has an X server and a window manager, a session bus with the accessibility bus and a notification
service of its own, and a home folder. Nothing of the user's own session reaches it, and it leaves no
process behind. A script begins with `live_alone()`, so that any number of them run side by side.
"""

from .accessibility import Accessibility, Window
from .alone import live_alone
from .connect import StemvaultConnect
from .daw import StandInDaw
from .dead_mount import DeadMount
from .desktop import VirtualDesktop
from .hanging_drive import HangingDrive
from .older_tray import OlderTray
from .tray import Tray
from .update_feed import UpdateFeed
from .waiting import TimedOut, wait_for

__all__ = ["Accessibility", "DeadMount", "HangingDrive", "OlderTray", "StandInDaw",
           "StemvaultConnect", "TimedOut", "Tray", "UpdateFeed", "VirtualDesktop", "Window",
           "live_alone", "wait_for"]
