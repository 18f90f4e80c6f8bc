# SPDX-License-Identifier: MIT
"""The installed package, from the first press to the game in the machine's own Ares and back."""

import os
import pathlib
import shutil
import subprocess
import time
import unittest

from screenreader import ALERT, BUTTON, LABEL, Program, wait_for

PICTURES = pathlib.Path(os.environ["CARTLOOM_PICTURES"])
STORAGE = pathlib.Path.home() / ".local/share/Quillet64 Player"
WRAPPER = "/opt/ares.app/Contents/MacOS/ares"
# A run of the emulator has to last that long to be a good one, in seconds.
GOOD_RUN = 3.0
# How long the emulator may take to show a game on a machine without a GPU, in seconds.
EMULATOR_PATIENCE = 120


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def machine_plays_nintendo_64():
    """Asked of the wrapper alone: whether it would start anything."""
    answer = subprocess.run([WRAPPER, "--help"], capture_output=True, text=True, check=False,
                            env={"PATH": os.environ["PATH"], "HOME": os.environ["HOME"]})
    return answer.returncode != 127


def take_picture(name):
    subprocess.run(["import", "-window", "root", PICTURES / f"{name}.png"], check=True)


def colours_of_game():
    """The two most frequent colours of the picture that the game shows, in the five bits of each that it has."""
    data = (STORAGE / "Quillet64.z64").read_bytes()[0x1000:0x1000 + 320 * 240 * 2]
    count = {}
    for i in range(0, len(data), 2):
        pixel = int.from_bytes(data[i:i + 2], "big") >> 1
        colour = (pixel >> 10 & 31, pixel >> 5 & 31, pixel & 31)
        count[colour] = count.get(colour, 0) + 1
    return sorted(count, key=count.get, reverse=True)[:2]


def share_of(colour, window):
    """Which part of a window's picture is of about that colour."""
    raw = subprocess.run(["import", "-silent", "-window", window, "-depth", "8", "rgb:-"],
                         capture_output=True, check=True).stdout
    pixels = len(raw) // 3
    alike = sum(all(abs((raw[3 * i + c] >> 3) - colour[c]) <= 1 for c in range(3)) for i in range(pixels))
    return alike / pixels


class Package(unittest.TestCase):
    def setUp(self):
        shutil.rmtree(STORAGE, ignore_errors=True)
        (pathlib.Path.home() / ".config/Cartloom/Cartloom.conf").unlink(missing_ok=True)
        self.launcher = Program(["cartloom"], {}, pathlib.Path.home())
        self.addCleanup(self.launcher.end)

    def accept_the_offer(self):
        self.launcher.press("Set up and Play")
        self.launcher.find(ALERT, "Ares is already on this Mac")
        self.launcher.find(LABEL, "Found /opt/ares.app. Use it instead of downloading about 80 MB?")
        take_picture("offer")
        self.launcher.press("Use that one")

    def window_of_game(self):
        listing = [line.split(None, 3) for line in output("wmctrl", "-l").splitlines()]
        return next((parts[0] for parts in listing if parts[-1] == "Quillet64"), None)

    @unittest.skipUnless(machine_plays_nintendo_64(), "no Ares here plays Nintendo 64 games")
    def test_the_machines_ares_plays_the_game(self):
        self.accept_the_offer()
        self.launcher.find(BUTTON, "Playing...", EMULATOR_PATIENCE)
        began = time.monotonic()
        window = wait_for("the window of the game", self.window_of_game, EMULATOR_PATIENCE)
        for colour in colours_of_game():
            wait_for(f"the game's colour {colour} in the window",
                     lambda seen=colour: share_of(seen, window) > 0.05, EMULATOR_PATIENCE)
        take_picture("playing")
        self.assertFalse((STORAGE / "Ares").exists())
        wait_for("a run that is long enough", lambda: time.monotonic() > began + GOOD_RUN + 0.2)
        self.assertIsNotNone(self.launcher.look_for(BUTTON, "Playing..."))
        subprocess.run(["wmctrl", "-i", "-c", window], check=True)
        self.launcher.find(BUTTON, "Play")
        self.assertIsNone(self.launcher.look_for(LABEL, "Ares stopped*"))
        take_picture("ended")

    @unittest.skipIf(machine_plays_nintendo_64(), "an Ares here plays Nintendo 64 games")
    def test_without_an_ares_that_plays_the_launcher_says_so(self):
        self.accept_the_offer()
        self.launcher.find(LABEL, "Ares stopped right away (exit code 127).*", EMULATOR_PATIENCE)
        take_picture("refused")
        self.launcher.press("Show Details")
        self.launcher.find(("text",), 'The Ares that is installed *Install the package "ares" in version 147 *')


if __name__ == "__main__":
    unittest.main(verbosity=2)
