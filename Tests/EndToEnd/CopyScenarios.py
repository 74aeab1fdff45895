"""Copies: nothing is lost, left incomplete, or replaced without a question."""

import os
import unittest

from Scenario import Scenario, wait_for


class CopyScenarios(Scenario):
    def test_a_taken_name_is_replaced_only_when_the_user_says_so(self):
        self.start_with_session()
        old = self.client_a / "Mix.wav"
        old.write_text("the old mix")
        self.bounce_and_ask("Mix.wav").answer("Add")
        question = self.connect.window("Replace existing file?")
        self.assertIn('Mix.wav already exists in "Client A".', question.texts())
        self.assertEqual(question.buttons(), ["Replace", "Cancel"])
        question.answer("Cancel")
        prompt = self.bounce_and_ask("Mix.wav", size=500_000)
        self.assertEqual(old.read_text(), "the old mix")
        prompt.answer("Add")
        self.connect.window("Replace existing file?").answer("Replace")
        self.desktop.wait_for_notification("Mix.wav → Client A")
        self.assert_copied(self.song / "Mix.wav", self.client_a)

    def test_a_copy_into_the_watched_folder_is_not_asked_about(self):
        self.start_with_session()
        delivery = self.folder("Sessions/Big Song/Delivery")
        self.connect.quit()
        self.start(folders=[delivery])
        self.connect.wait_until_it_watches(delivery)
        self.bounce_and_ask("Mix.wav").answer("Add")
        self.desktop.wait_for_notification("Mix.wav → Delivery")
        self.bounce_and_ask("Next.wav")

    def test_any_name_that_a_file_can_have_arrives_whole(self):
        self.start_with_session()
        names = ["new\nline.wav", os.fsdecode(b"not \xff UTF-8.wav"), "n" * 251 + ".wav",
                 "<b>&amp; %1 \\ \u202e é.WAV"]
        for name in names:
            self.daw.start_bounce(self.song / name)
        for _ in names:
            self.connect.prompt().answer("Add")
        for name in names:
            wait_for(f"the copy {name!r}", (self.client_a / name).exists)
            self.assert_copied(self.song / name, self.client_a)

    def test_a_kill_in_the_middle_leaves_no_half_copy(self):
        self.start_with_session()
        mix = self.song / "Mix.wav"
        mix.write_bytes(os.urandom(1 << 20) * 256)
        self.connect.prompt("Mix.wav").press("Add")
        target = str(self.client_a)
        while not any(file.startswith(target) for file in self.connect.open_files()):
            self.assertFalse((self.client_a / "Mix.wav").exists(), "the copy was never seen open")
        self.connect.process.kill()
        self.connect.process.wait()
        left = self.client_a / "Mix.wav"
        if left.exists():
            self.assert_copied(mix, self.client_a)
        self.start()
        self.connect.wait_until_it_watches(self.song)


class WithoutNotificationsScenarios(Scenario):
    notifications = None

    def test_the_copy_arrives_all_the_same(self):
        self.start_with_session()
        self.bounce_and_ask("Mix.wav").answer("Add")
        wait_for("the copy", (self.client_a / "Mix.wav").exists)
        self.assert_copied(self.song / "Mix.wav", self.client_a)


if __name__ == "__main__":
    unittest.main()
