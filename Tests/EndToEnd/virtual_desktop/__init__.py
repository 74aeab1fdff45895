"""A desktop without a screen, for tests, pictures and demonstrations.

    with VirtualDesktop() as desktop:
        desktop.start("program", ["/usr/bin/some-program"])
        dialog = desktop.accessibility.window("Some question")
        dialog.press("Yes")

It has its own X server, window manager, session bus, accessibility bus, notification service and home
folder. It is isolated from the user's own session, and leaves no process behind. A script starts with
`live_alone()`, so that any number of scripts can run in parallel.
"""

from .accessibility import Accessibility, Window
from .alone import live_alone
from .connect import StemvaultConnect
from .daw import StandInDaw
from .dead_mount import DeadMount
from .desktop import VirtualDesktop
from .older_tray import OlderTray
from .tray import Tray
from .update_feed import UpdateFeed
from .waiting import TimedOut, wait_for

__all__ = ["Accessibility", "DeadMount", "OlderTray", "StandInDaw",
           "StemvaultConnect", "TimedOut", "Tray", "UpdateFeed", "VirtualDesktop", "Window",
           "live_alone", "wait_for"]
