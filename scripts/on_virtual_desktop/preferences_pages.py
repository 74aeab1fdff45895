"""Pictures of the preferences, the tray menu, and the results of a check for updates."""

from virtual_desktop import StandInDaw, StemvaultConnect, Tray, UpdateFeed, VirtualDesktop, wait_for


class PreferencesPages:
    def __init__(self, programs, pictures, suffix, look, scale="1"):
        self.programs, self.pictures, self.suffix = programs, pictures, suffix
        self.look, self.scale = look, scale

    def make(self):
        with self.desktop(1000, 820) as desktop:
            self.take_preferences(desktop)
        if self.scale == "1":
            with self.desktop(1000, 600) as desktop:
                self.take_updates(desktop)
            with self.desktop(480, 260) as desktop:
                self.take_menu(desktop)

    def desktop(self, width, height):
        factor = float(self.scale)
        desktop = VirtualDesktop(size=f"{width * factor:.0f}x{height * factor:.0f}", look=self.look)
        desktop.environment["QT_SCALE_FACTOR"] = self.scale
        return desktop

    def keep(self, desktop, name, window=None):
        path = self.pictures / f"{name}{self.suffix}.png"
        desktop.display.take_picture(path, window)
        print(path)

    def take_preferences(self, desktop):
        root = desktop.made_folder("home/Dropbox/Apps/Stem Vault")
        there = [desktop.made_folder(f"home/Dropbox/Stemvault/{name}")
                 for name in ("Northern Lights EP", "Client Review", "Radio Edits")]
        many = [desktop.made_folder(f"home/Clients/Client {number}") for number in range(1, 41)]
        daw = self.open_session(desktop)
        self.take_page(desktop, "full", folders=there, projects_root=root,
                       always_watch=desktop.made_folder("home/Dropbox/Masters"))
        self.take_page(desktop, "missing", folders=[there[0], desktop.home / "Dropbox/Moved"])
        self.take_page(desktop, "many", folders=many)
        daw.quit()
        self.take_page(desktop, "empty", folders=[])

    def open_session(self, desktop):
        song = desktop.made_folder("home/Sessions/Big Song")
        (song / "Big Song.rpp").write_text("<REAPER_PROJECT>\n")
        self.song = song
        return StandInDaw(desktop, self.programs / "stand-in-daw", song / "Big Song.rpp")

    def take_page(self, desktop, name, **settings):
        connect = StemvaultConnect(desktop, self.programs / "stemvault-connect", **settings)
        connect.start_again()
        window = connect.window("Stemvault Connect")
        window.focus()
        if name == "full":
            window.toggle("Launch at login")
            wait_for("the switch", lambda: window.is_checked("Launch at login"))
        if name == "empty":
            wait_for("no session", lambda: "No session detected" in window.texts())
        else:
            wait_for("the session", lambda: "Big Song" in window.texts())
        warning = "Folder not found — move it or remove it"
        if name == "missing":
            wait_for("the warning", lambda: warning in window.texts())
        self.keep(desktop, f"preferences-{name}", window.id())
        connect.quit()

    def take_updates(self, desktop):
        tray = Tray(desktop).start()
        feed = UpdateFeed(desktop, self.programs / "stemvault-connect")
        connect = StemvaultConnect(desktop, feed.program)
        for name, title, prepare in (
                ("found", "Update Available",
                 lambda: feed.publish("1.1", notes="Copies large bounces twice as fast.")),
                ("none", "You're Up to Date", lambda: feed.publish("0")),
                ("failed", "Couldn't Check for Updates", feed.withdraw)):
            prepare()
            tray.item().choose("Check for Updates…")
            alert = connect.window(title)
            alert.focus()
            self.keep(desktop, f"update-{name}", alert.id())
            alert.answer("Later" if name == "found" else "OK")
        connect.quit()

    def take_menu(self, desktop):
        tray = Tray(desktop).start()
        folder = desktop.made_folder("home/Northern Lights EP")
        daw = self.open_session(desktop)
        connect = StemvaultConnect(desktop, self.programs / "stemvault-connect", folders=[folder])
        connect.wait_until_it_watches(self.song)
        daw.bounce(self.song / "Big Song - Mix 7.wav")
        connect.prompt().answer("Add")
        desktop.wait_for_notification("Big Song - Mix 7.wav → Northern Lights EP")
        before = desktop.display.pixels()
        tray.item().activate(x=30, y=24)
        wait_for("the menu", desktop.display.pop_ups)
        wait_for("its rows", lambda: desktop.display.pixels() != before)
        self.keep(desktop, "menu")
        desktop.display.press_key("Escape")
        connect.quit()
