# SPDX-License-Identifier: MIT
"""What stands below the main button: files of the player's own, full screen, update, reset, About."""

import shutil
import subprocess
import unittest

import pyatspi

from filemanager import FileManager
from screenreader import ALERT, BUTTON, CHECK_BOX, LABEL, is_in_state, wait_for
from stage import LauncherTest


class Footer(LauncherTest):
    def test_full_screen_is_kept_and_told_to_the_emulator(self):
        self.install()
        launcher = self.launch(self.playing_until_told)
        box = launcher.find(CHECK_BOX, "Fullscreen")
        self.assertFalse(is_in_state(box, pyatspi.STATE_CHECKED))
        launcher.press("Fullscreen", CHECK_BOX)
        wait_for("the box is checked", lambda: is_in_state(box, pyatspi.STATE_CHECKED))
        launcher.press("Play")
        self.assertIn("--fullscreen", self.wait_for_emulator())

    def test_an_update_whose_first_start_fails_is_taken_back(self):
        self.install("v147")
        launcher = self.launch("err cannot start", "exit 4", tag="v148")
        launcher.find(LABEL, "Ares v147")
        launcher.press("Check for a newer Ares")
        launcher.find(ALERT, "A newer Ares is available")
        launcher.find(LABEL, "Version v148 can be downloaded. "
                             "Your current copy is kept until the new one works.")
        launcher.press("Update")
        launcher.find(LABEL, "Ares v148")
        self.assertEqual(self.installed_tag(), "v148")

        launcher.press("Play")
        report = launcher.find(LABEL, "Ares stopped right away (exit code 4).*").name
        self.assertIn("The new Ares did not work, so the previous version was put back.", report)
        # What went is what counts for the next check: it names the release that failed.
        self.assertEqual(self.installed_tag(), "v148")
        self.assertEqual((self.storage / "Ares/ares.app/Contents/mark").read_text(), "v147")
        self.assertFalse((self.storage / "Ares-old").exists())

    def test_an_update_can_be_put_off(self):
        self.install("v147")
        launcher = self.launch()
        launcher.press("Check for a newer Ares")
        launcher.find(ALERT, "A newer Ares is available")
        launcher.press("Not now")
        launcher.wait_until_gone(ALERT, "A newer Ares is available")
        self.assertEqual(self.installed_tag(), "v147")

    def test_a_reset_asks_first(self):
        self.install()
        launcher = self.launch()
        launcher.press("Reset")
        launcher.find(ALERT, "Reset everything?")
        launcher.press("Cancel")
        launcher.wait_until_gone(ALERT, "Reset everything?")
        self.assertTrue((self.storage / "Quillet64.z64").exists())

        launcher.press("Reset")
        launcher.find(ALERT, "Reset everything?")
        launcher.press("Delete")
        launcher.find(LABEL, "Everything was deleted. The next click downloads it again.")
        launcher.find(BUTTON, "Set up and Play")
        self.assertFalse((self.storage / "Quillet64.z64").exists())
        self.assertFalse((self.storage / "Ares").exists())

    def test_the_folder_is_selected_in_the_file_manager(self):
        manager = FileManager()
        self.addCleanup(manager.close)
        launcher = self.launch()
        launcher.press("Show in Finder")
        wait_for("the file manager was asked", lambda: manager.selected)
        self.assertEqual(manager.selected, [[self.storage.as_uri()]])
        self.assertTrue(self.storage.is_dir())

    def test_about_opens_and_closes(self):
        launcher = self.launch()
        launcher.press("About")
        launcher.find(("dialog",), "About Cartloom")
        launcher.find(LABEL, "About Cartloom")
        for place in ("127.0.0.1*/quillet64", "ares-emu.net"):
            launcher.find(("link",), place)
        launcher.press("Close")
        launcher.wait_until_gone(LABEL, "About Cartloom")


class OwnFiles(LauncherTest):
    """The panel opens in the folder that the launcher was started in."""

    def choose(self, launcher, title, name):
        # Of the window and the dialog in it, one has the title, which one depends on the toolkit.
        launcher.find(("dialog", "frame"), title)
        # The entries and buttons of the toolkit's own panel do nothing when they are pressed by their actions.
        self.click(launcher.find(LABEL, name))
        self.click(launcher.find(BUTTON, "Open"))

    @staticmethod
    def click(control):
        place = control.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
        subprocess.run(["xdotool", "mousemove", str(place.x + place.width // 2),
                        str(place.y + place.height // 2), "click", "1"], check=True)

    def test_a_rom_of_the_players_own_is_played(self):
        self.install()
        own = self.files / "mine.z64"
        shutil.copy(self.game, own)
        launcher = self.launch(self.playing_until_told)
        launcher.press("Open a ROM file (.z64 / .v64)...")
        self.choose(launcher, "Choose a Nintendo 64 game", "mine.z64")
        self.assertEqual(self.wait_for_emulator(), ["--system", "Nintendo 64", str(own)])

    def test_the_game_file_can_be_given_by_hand_when_its_download_failed(self):
        broken = self.files / "broken.z64"
        broken.write_bytes(b"no game at all" * 10)
        launcher = self.launch(game=broken)
        launcher.press("Set up and Play")
        launcher.find(BUTTON, "Open the download page")
        launcher.press("I already have the file")
        self.choose(launcher, "Choose Quillet64.z64", "Quillet64.z64")
        launcher.find(LABEL, "Game file added. Press the button to play.")
        launcher.find(BUTTON, "Play")


if __name__ == "__main__":
    unittest.main(verbosity=2)
