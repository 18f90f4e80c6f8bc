# SPDX-License-Identifier: MIT
"""The way from nothing to a running game, and what goes wrong on it."""

import subprocess
import time
import unittest

from screenreader import ALERT, BUTTON, LABEL, PROGRESS_BAR, Announcements, wait_for
from stage import LauncherTest, make_app, make_archive, processes_of

# A run of the emulator has to last that long to be a good one, in seconds.
GOOD_RUN = 3.0


class Play(LauncherTest):
    def test_the_first_play_leads_through_every_stage_to_the_game_and_back(self):
        slow = self.files / "slow.zip"
        make_archive(slow, ballast=25_000_000)
        launcher = self.launch(self.playing_until_told, archive=slow)
        launcher.find(LABEL, "Downloads the Ares emulator*")
        launcher.press("Set up and Play")
        launcher.find(BUTTON, "Getting Ares")
        launcher.find(PROGRESS_BAR, "Getting Ares")
        launcher.find(BUTTON, "Cancel")
        launcher.find(BUTTON, "Getting the game")
        launcher.find(BUTTON, "Playing...")
        began = time.monotonic()
        self.assertIsNone(launcher.look_for(BUTTON, "Cancel"))
        self.assertEqual(self.wait_for_emulator(),
                         ["--system", "Nintendo 64", str(self.storage / "Quillet64.z64")])
        # Qt 6.4 does not tell assistive technology that a button is disabled; that it is can be felt.
        launcher.press("Playing...")
        self.assertEqual(len(processes_of(self.home)), 1)
        self.assertIsNotNone(launcher.look_for(BUTTON, "Playing..."))

        wait_for("a run that is long enough", lambda: time.monotonic() > began + GOOD_RUN + 0.2)
        self.emulator_end.touch()
        launcher.find(BUTTON, "Play")
        self.assertIsNone(launcher.look_for(LABEL, "Ares stopped*"))
        self.assertIsNone(launcher.look_for(LABEL, "Downloads the Ares emulator*"))
        self.assertEqual(self.installed_tag(), "v148")

    def test_stages_and_messages_are_announced(self):
        self.install()
        launcher = self.launch(self.playing_until_told)
        announcements = Announcements()
        self.addCleanup(announcements.close)
        launcher.press("Play")
        announcements.wait_for("Playing...")
        self.emulator_end.touch()
        launcher.find(BUTTON, "Play")
        launcher.press("Check for a newer Ares")
        announcements.wait_for("Ares v148 is the newest version.")

    def test_a_download_can_be_cancelled(self):
        large = self.files / "large.zip"
        make_archive(large, ballast=250_000_000)
        launcher = self.launch(archive=large)
        launcher.press("Set up and Play")
        launcher.find(BUTTON, "Getting Ares")
        launcher.press("Cancel")
        launcher.find(LABEL, "Cancelled. Nothing was changed.")
        launcher.find(BUTTON, "Set up and Play")
        self.assertFalse(self.started.exists())

    def test_a_failing_emulator_is_reported_and_its_words_can_be_read(self):
        self.install()
        launcher = self.launch("err no such core", "exit 3")
        launcher.press("Play")
        launcher.find(LABEL, "Ares stopped right away (exit code 3).*")
        self.assertIsNone(launcher.look_for(("text",), "no such core*"))
        launcher.press("Show Details")
        launcher.find(("text",), "no such core*")
        launcher.press("Show Details")
        launcher.wait_until_gone(("text",), "no such core*")

    def test_a_second_start_brings_the_window_to_the_front_and_ends(self):
        def active():
            answer = subprocess.run(["xdotool", "getactivewindow"],
                                    capture_output=True, text=True, check=False)
            return answer.stdout.strip()

        launcher = self.launch()
        window = wait_for("the launcher is in front", active)
        subprocess.run(["xdotool", "windowminimize", window], check=True)
        wait_for("the launcher is out of sight", lambda: active() != window)
        again = subprocess.run(self.command(), timeout=20, check=False)
        self.assertEqual(again.returncode, 0)
        wait_for("the launcher is in front again", lambda: active() == window)
        self.assertIsNone(launcher.process.poll())


class Offer(LauncherTest):
    def setUp(self):
        super().setUp()
        self.own = make_app(self.home / "Applications")

    def ask(self, *then):
        launcher = self.launch(*then)
        launcher.press("Set up and Play")
        launcher.find(ALERT, "Ares is already on this Mac")
        launcher.find(LABEL, f"Found {self.own}. Use it instead of downloading about 80 MB?")
        return launcher

    def test_a_copy_on_the_machine_can_be_turned_down_and_used_later(self):
        launcher = self.ask(self.playing_until_told)
        launcher.press("Cancel")
        launcher.wait_until_gone(ALERT, "Ares is already on this Mac")
        self.assertFalse(self.started.exists())

        launcher.press("Set up and Play")
        launcher.find(ALERT, "Ares is already on this Mac")
        launcher.press("Use that one")
        launcher.find(BUTTON, "Playing...")
        self.wait_for_emulator()
        self.assertFalse((self.storage / "Ares").exists())

    def test_a_download_can_be_preferred_to_a_copy_on_the_machine(self):
        launcher = self.ask(self.playing_until_told)
        launcher.press("Download Ares")
        launcher.find(BUTTON, "Playing...")
        self.assertEqual(self.installed_tag(), "v148")


if __name__ == "__main__":
    unittest.main(verbosity=2)
