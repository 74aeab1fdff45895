"""Which folders are watched, and when."""

import unittest

from Scenario import Scenario


class WatchingScenarios(Scenario):
    def test_the_always_watch_folder_needs_no_daw(self):
        bounces = self.folder("Bounces")
        self.start(always_watch=bounces)
        (bounces / "Audio Files").mkdir()
        (bounces / "Audio Files" / "Mix.wav").write_bytes(b"RIFF")
        self.assertIn("Mix.wav\nfrom Audio Files", self.connect.prompt("Mix.wav").texts())

    def test_the_watched_folder_follows_the_session_until_the_daw_quits(self):
        bounces = self.folder("Bounces")
        self.start_with_session(always_watch=bounces)
        last_question = self.bounce_and_ask("Old.wav")
        next_song = self.folder("Sessions/Next Song")
        self.daw.close(self.song / "Big Song.rpp")
        self.daw.open(self.session_file(next_song))
        last_question.answer("Skip")
        self.connect.wait_until_it_watches(next_song)
        self.connect.wait_until_it_leaves(self.song)
        self.daw.bounce(self.song / "Old.wav", size=500_000)
        self.daw.bounce(next_song / "New.wav")
        self.assertIn("New.wav\nfrom Next Song", self.connect.prompt().texts())
        self.connect.wait_until_it_rests()  # A running scan may still deliver an older result.
        self.daw.quit()
        self.connect.wait_until_it_leaves(next_song)
        self.connect.wait_until_it_watches(bounces)


if __name__ == "__main__":
    unittest.main()
