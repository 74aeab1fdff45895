"""The prompt and its answers."""

import unittest

from Scenario import PROGRAMS, Scenario, wait_for
from virtual_desktop import Tray
from virtual_desktop.services import Services


class PromptScenarios(Scenario):
    def test_add_copies_a_finished_mix_to_the_chosen_folder(self):
        self.start_with_session()
        mix = self.song / "Mix.wav"
        self.daw.start_bounce(mix, portions=10, milliseconds=300)
        prompt = self.connect.prompt("Mix.wav")
        self.assertTrue(self.daw.has_bounced(mix), "asked while the mix was still growing")
        self.assertIn("Mix.wav\nfrom Big Song", prompt.texts())
        self.assertEqual(prompt.buttons(), ["Add", "Skip", "Cancel"])
        self.assertEqual(prompt.choices(), ["Client A", "Client B", "New Folder…"])
        prompt.choose("Client B")
        prompt.answer_by_key("Return")
        note = self.desktop.wait_for_notification("Mix.wav → Client B")
        self.assertEqual(note["summary"], "Added to Stemvault")
        self.assert_copied(mix, self.client_b)

    def test_add_all_takes_what_waits_and_what_came_meanwhile(self):
        self.start_with_session()
        first = self.bounce_and_ask("1.wav")
        self.daw.bounce(self.song / "2.wav")
        self.daw.bounce(self.song / "3.wav")
        self.connect.wait_until_it_rests()
        first.answer("Skip")
        second = self.connect.prompt("2.wav\nfrom Big Song\n\n+ 1 more waiting")
        self.assertEqual(second.buttons(), ["Add All (2)", "Add", "Skip", "Cancel"])
        self.daw.bounce(self.song / "4.wav")
        self.connect.wait_until_it_rests()
        second.answer_by_key("Return")
        self.desktop.wait_for_notification("3 files → Client A")
        self.assertEqual(sorted(file.name for file in self.client_a.iterdir()),
                         ["2.wav", "3.wav", "4.wav"])

    def test_new_folder_is_kept_and_offered_from_then_on(self):
        root = self.folder("Projects")
        self.start_with_session(folders=[], projects_root=root)
        prompt = self.bounce_and_ask("Mix.wav")
        self.assertEqual(prompt.choices(), ["New Folder…"])
        prompt.answer_by_key("Return")
        panel = self.connect.window("Choose or create a folder for this Stemvault project.")
        panel.type("Directory:", str(self.client_a))
        panel.answer("Use This Folder")
        self.desktop.wait_for_notification("Mix.wav → Client A")
        self.assert_copied(self.song / "Mix.wav", self.client_a)
        wait_for("the folder among the settings", lambda: [str(self.client_a)] == [
            folder["path"] for folder in self.connect.settings()["stemvaultFolders"]])
        self.assertEqual(self.bounce_and_ask("Next.wav").choices(), ["Client A", "New Folder…"])

    def test_without_any_destination_it_leads_to_the_preferences(self):
        Tray(self.desktop).start()  # Without a tray the preferences would open by themselves.
        self.start_with_session(folders=[])
        prompt = self.bounce_and_ask("Mix.wav")
        self.assertEqual(prompt.buttons(), ["Open Preferences", "Skip"])
        prompt.answer("Skip")
        self.bounce_and_ask("Next.wav").answer_by_key("Return")
        self.connect.window("Stemvault Connect").focus()

    def test_the_keyboard_chooses_with_and_without_the_list(self):
        self.start_with_session()
        prompt = self.bounce_and_ask("Mix.wav")
        for key, choice in (("Down", "Client B"), ("Down", "New Folder…"), ("Up", "Client B"),
                            ("Up", "Client A")):
            prompt.choose_by_arrow(key, choice)
        for keys, choice in ((("Alt_L", "Down"), "Client B"), (("F4",), "New Folder…"),
                             (("space",), "Client B")):
            prompt.open_list(*keys)
            prompt.choose_from_list(choice)
            self.assertTrue(prompt.is_open(), "a key for the list answered the prompt")
        prompt.answer_by_key("KP_Enter")
        self.desktop.wait_for_notification("Mix.wav → Client B")

    def test_return_presses_the_default_button_of_every_alert(self):
        services = Services(self.desktop, PROGRAMS)
        projects = self.folder("Projects")
        self.start_with_session(projects_root=projects)
        (self.client_a / "Mix.wav").write_text("the old mix")
        self.bounce_and_ask("Mix.wav").answer_by_key("KP_Enter")
        self.connect.window("Replace existing file?").answer_by_key("Return")
        self.desktop.wait_for_notification("Mix.wav → Client A")
        self.client_b.rmdir()
        self.client_b.write_text("a file where the folder was")
        prompt = self.bounce_and_ask("Next.wav")
        prompt.choose("Client B")
        prompt.answer_by_key("Return")
        self.connect.window("Copy failed").answer_by_key("Return")
        services.run("playlist", self.song / "Mix.wav")
        self.connect.window("Create Stemvault playlist").answer_by_key("Return")
        wait_for("the playlist's copy", lambda: list(projects.glob("*/Mix.wav")))


if __name__ == "__main__":
    unittest.main()
