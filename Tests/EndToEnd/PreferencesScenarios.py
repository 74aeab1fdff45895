"""The tray menu, and the preferences that it opens."""

import shutil
import time
import unittest
from pathlib import Path

from Scenario import PROGRAMS, Scenario
from virtual_desktop import DeadMount, OlderTray, Tray, UpdateFeed, wait_for

ROWS = ["-", "Preferences…", "Check for Updates…", "-", "Quit Stemvault Connect"]


class TrayScenarios(Scenario):
    def test_the_item_is_there_whenever_a_panel_is(self):
        self.start()
        tray = Tray(self.desktop).start()
        self.assertEqual(tray.item().property("IconName"), "net.stemvault.Connect-symbolic")
        # GNOME's panel occasionally loses an item that is registered by a name other than its connection's.
        self.assertTrue(tray.item().owner.startswith(":"))
        tray.end()
        tray.start()
        self.assertEqual(tray.item().titles(), ["No session detected", *ROWS])

    def test_a_panel_reads_all_that_there_is_to_read(self):
        tray = Tray(self.desktop).start()
        self.start()
        of_item, of_menu = tray.item().properties()
        told = {name: value for name, value in of_item.items() if value}
        # Only a program that is not installed has a theme of its own.
        theme = Path(told.pop("IconThemePath", "/usr/share/icons"))
        self.assertTrue(list(theme.rglob("net.stemvault.Connect-symbolic.svg")), theme)
        self.assertEqual(told, {
            "Category": "ApplicationStatus", "Id": "net.stemvault.Connect",
            "Title": "Stemvault Connect", "Status": "Active", "Menu": "/MenuBar",
            "IconName": "net.stemvault.Connect-symbolic", "IconAccessibleDesc": "Stemvault Connect",
            "ItemIsMenu": True, "ToolTip": ("", [], "Stemvault Connect", "")})
        self.assertEqual(of_menu, {"Version": 3, "TextDirection": "ltr", "Status": "normal",
                                   "IconThemePath": []})

    def test_a_panel_may_group_its_calls(self):
        tray = Tray(self.desktop).start()
        self.start_with_session()
        item = tray.item()
        last = len(item.rows())
        self.assertEqual(item.open_menu_in_groups(0, last, 99), ([], [99]))
        quit_row = {"label": "Quit Stemvault Connect", "shortcut": [["Control", "q"]]}
        self.assertEqual(item.group_properties(0, last),
                         [(0, {"children-display": "submenu"}), (last, quit_row)])
        self.assertEqual((item.row(last), item.row(99)), (quit_row, {}))
        item.scroll()  # Has no effect.
        self.assertEqual(item.choose_in_groups(99, 1, last), [99])
        self.assertEqual(self.connect.process.wait(timeout=10), 0)

    def test_so_it_is_in_a_tray_of_the_older_kind(self):
        self.start()
        tray = OlderTray(self.desktop).start()
        tray.icon()
        tray.end()
        tray.start()
        for button in (1, 3):
            rows = tray.open_menu(self.connect.process, button)
            self.assertEqual(rows, ["No session detected", *(row for row in ROWS if row != "-")])
            self.desktop.display.press_key("Escape")
            wait_for("the menu to close", lambda: not self.desktop.display.pop_ups())
        tray.open_menu(self.connect.process)
        self.desktop.display.press_keys("Control_L", "comma")
        self.connect.window("Stemvault Connect").focus()
        tray.open_menu(self.connect.process)
        self.desktop.display.press_keys("Control_L", "q")
        self.assertEqual(self.connect.process.wait(timeout=10), 0)

    def test_without_a_bus_it_is_in_a_tray_of_the_older_kind(self):
        tray = OlderTray(self.desktop).start()
        self.start(is_running=False)
        self.connect.process = self.connect.start(
            environment={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nowhere"})
        tray.icon()

    def test_the_menu_opens_at_the_click_wherever_the_panel_says_it_was(self):
        tray = Tray(self.desktop).start()
        self.start()
        display = self.desktop.display
        for method, pointer, told, expected in (
                ("Activate", (640, 400), (0, 25), (640, 400)),
                ("SecondaryActivate", (640, 400), (0, 25), (640, 400)),
                ("ContextMenu", (640, 400), (630, 420), (630, 420))):
            display.move_pointer(*pointer)
            tray.item().activate(method, *told)
            menu = wait_for("the menu", display.pop_ups)[0]
            left, top, _, _ = display.frame(menu)
            self.assertLess(max(abs(left - expected[0]), abs(top - expected[1])), 5)
            display.press_key("Escape")
            wait_for("the menu to close", lambda: not display.pop_ups())

    def test_the_pointer_is_busy_no_longer_than_until_the_click_has_arrived(self):
        tray = Tray(self.desktop).start()
        self.start()
        item = tray.item()
        messages = self.desktop.display.watch_startups()
        item.pass_token('gnome-shell/Stem "vault"/1-0_TIME1')
        self.assertEqual(messages(), r'remove: ID="gnome-shell/Stem \"vault\"/1-0_TIME1"')
        for useless in ("t" * 5000, "gn\u00f6me", "line\nfeed", "", "last"):
            item.pass_token(useless)
        self.assertEqual(messages(), 'remove: ID="last"')
        self.connect.start_again({"XDG_ACTIVATION_TOKEN": "launcher/1"})
        self.assertEqual(messages(), 'remove: ID="launcher/1"')

    def test_without_any_tray_a_first_start_opens_the_preferences(self):
        self.start(folders=[])
        wait_for("the preferences", lambda: self.desktop.accessibility.find_window(
            "Stemvault Connect"), 25)

    def test_the_rows_tell_of_the_session_and_the_last_copy(self):
        tray = Tray(self.desktop).start()
        self.start_with_session()
        item = tray.item()
        self.assertEqual(item.titles(), ["Big Song", *ROWS])
        first = item.rows()[0]
        self.assertEqual(first["accessible-desc"], "● Big Song")
        self.assertFalse(first["enabled"])
        self.bounce_and_ask("Mix_&.wav").answer("Add")
        self.desktop.wait_for_notification("Mix_&.wav → Client A")
        self.daw.quit()
        self.connect.wait_until_it_leaves(self.song)
        self.connect.wait_until_it_rests()  # A pass from before the end may still be reported.
        item.open_menu_by_event()
        rows = item.rows()
        self.assertEqual(rows[1]["label"], "Last added: Mix__&.wav → Client A")
        self.assertEqual(rows[0]["accessible-desc"], "○ No session detected")

    def test_quit_in_the_menu_ends_the_program(self):
        tray = Tray(self.desktop).start()
        self.start()
        tray.item().choose("Quit Stemvault Connect")
        self.assertEqual(self.connect.process.wait(timeout=10), 0)

    def test_a_look_for_updates_always_says_what_came_of_it(self):
        tray = Tray(self.desktop).start()
        feed = UpdateFeed(self.desktop, PROGRAMS / "stemvault-connect")
        self.start(program=feed.program)
        for prepare, title, button in (
                (lambda: feed.publish("99", notes="Faster."), "Update Available", "Later"),
                (lambda: feed.publish("0"), "You're Up to Date", "OK"),
                (feed.withdraw, "Couldn't Check for Updates", "OK")):
            prepare()
            tray.item().choose("Check for Updates…")
            self.connect.window(title).answer(button)


class PreferencesScenarios(Scenario):
    def open(self):
        self.assertEqual(self.connect.start_again(), 0)
        return self.connect.window("Stemvault Connect")

    def paths(self):
        return [folder["path"] for folder in self.connect.settings()["stemvaultFolders"]]

    def choose_folder(self, prompt, *folders):
        panel = self.connect.window(prompt)
        panel.type("Directory:", " ".join(f'"{folder}"' for folder in folders)
                   if len(folders) > 1 else str(folders[0]))
        panel.answer(prompt)

    def test_without_a_tray_another_start_opens_them_in_one_window(self):
        self.start()
        window = self.open()
        self.open()
        titles = [title for title in self.desktop.display.windows().values() if "Stemvault" in title]
        self.assertEqual(len(titles), 1)
        window.focus()
        self.desktop.display.press_key("Escape")
        window.wait_until_closed()
        self.open().focus()
        self.desktop.display.press_keys("Control_L", "q")
        self.assertEqual(self.connect.process.wait(timeout=10), 0)

    def test_they_come_to_the_front_from_wherever_they_are(self):
        self.start()
        window = self.open()
        window.focus()
        for hide in (lambda: self.desktop.display.show_workspace(1),
                     lambda: self.desktop.display.minimise(window.id())):
            hide()
            self.open().focus()

    def test_folders_come_and_go_at_once_and_the_window_stays_on_the_screen(self):
        self.start(folders=[self.client_a])
        window = self.open()
        window.focus()
        many = [self.folder(f"Clients/Client {number}") for number in range(12)]
        window.press("+ Add")
        self.choose_folder("Add to Stemvault", *many)
        wait_for("the folders", lambda: len(self.paths()) == 13)
        screen = self.desktop.display.screen.height_in_pixels

        def is_whole():
            _, top, _, height = self.desktop.display.frame(window.id())
            return height > 600 and 0 <= top and top + height < screen
        wait_for("the whole window on the screen", is_whole)
        window.press("Remove Client A")
        wait_for("its end", lambda: sorted(self.paths()) == sorted(map(str, many)))
        many[0].rename(many[0].with_name("Moved"))
        window.press("+ Add")
        self.choose_folder("Add to Stemvault", self.client_a)
        wait_for("the warning", lambda: "Folder not found — move it or remove it" in window.texts())

    def test_a_drive_that_does_not_answer_holds_up_nobody(self):
        if not DeadMount.is_allowed(self.desktop):
            self.skipTest("mounting a drive is not permitted")
        drive = self.folder("nas")
        dead = DeadMount(self.desktop, drive, PROGRAMS / "stemvault-connect")
        self.addCleanup(dead.answer)
        self.start_daw()
        self.start(program=dead.program, projects_root=drive, always_watch=drive, is_running=False,
                   folders=[drive / "A", self.client_a, self.folder("gone")], privileged=True)
        (self.desktop.home / "gone").rmdir()
        self.connect.process = self.connect.start()
        window = self.open()
        wait_for("the warning", lambda: window.texts().count(
            "Folder not found — move it or remove it") == 1)
        # lsof lists the DAW's files; it queries every drive, and is killed after ten seconds.
        wait_for("the session", lambda: self.connect.watches(self.song), 30)
        prompt = self.bounce_and_ask("Mix.wav")
        prompt.choose("Client A")
        prompt.answer("Add")
        self.desktop.wait_for_notification("Mix.wav → Client A")
        window.press("Choose…", 1)
        self.choose_folder("Watch This Folder", self.client_b)
        self.connect.wait_until_it_watches(self.client_b)
        asked_to_end = time.monotonic()
        self.assertEqual(self.connect.quit(), 0)
        self.assertLess(time.monotonic() - asked_to_end, 5, "it waits for copies alone")

    def test_both_folders_are_chosen_and_cleared(self):
        self.start()
        window = self.open()
        for number, prompt, key in ((0, "Set as Projects Root", "projectsRootPath"),
                                    (1, "Watch This Folder", "alwaysWatchPath")):
            window.press("Choose…", number)
            self.choose_folder(prompt, self.client_b)
            wait_for(key, lambda: self.connect.settings().get(key) == str(self.client_b))
            if key == "alwaysWatchPath":
                self.connect.wait_until_it_watches(self.client_b)
            window.press("Clear")
            wait_for(f"no {key}", lambda: key not in self.connect.settings())
        self.connect.wait_until_it_leaves(self.client_b)

    def test_the_session_appears_and_goes_while_they_are_open(self):
        self.start()
        window = self.open()
        self.assertIn("No session detected", window.texts())
        self.start_daw()
        wait_for("the session", lambda: "~/Sessions/Big Song" in window.texts())
        self.daw.quit()
        wait_for("its end", lambda: "No session detected" in window.texts())

    def test_where_no_shortcuts_are_known_the_command_to_bind_is_shown(self):
        program = shutil.copy2(PROGRAMS / "stemvault-connect", self.folder("usr/bin"))
        courier = self.folder("usr/libexec/stemvault-connect") / "courier"
        courier.touch()
        self.start(program=program)
        self.open().press("Set Up Hotkey…")
        alert = self.connect.window("Bind a key to this command")
        self.assertTrue(any(text.endswith(f"\n\n{courier} add-selection") for text in alert.texts()),
                        alert.texts())
        alert.answer("OK")

    def test_the_switch_writes_the_autostart_entry(self):
        self.start()
        window = self.open()
        entry = self.desktop.home / ".config/autostart/net.stemvault.Connect.desktop"
        window.toggle("Launch at login")
        wait_for("the entry", entry.exists)
        window.toggle("Launch at login")
        wait_for("its end", lambda: not entry.exists())


if __name__ == "__main__":
    unittest.main()
