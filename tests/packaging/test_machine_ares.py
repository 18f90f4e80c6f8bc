# SPDX-License-Identifier: MIT
"""What starts the Ares of the machine, with stand-ins for all that it may find on the path."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

WRAPPER = pathlib.Path(os.environ["CARTLOOM_ARES_WRAPPER"])
# What the wrapper itself calls.
TOOLS = ("sh", "cat", "dirname", "grep", "readlink", "realpath", "sed", "timeout", "tr")

# What Ares 148 says of itself, and what a build without the console says.
HELP = """Usage: ares [OPTIONS]... game(s)

  --help                 Displays available options and exit
  --fullscreen           Start in full screen mode
  --system system        Specify the system name
Available Systems:
"""
WITH_NINTENDO_64 = HELP + "  Arcade, Nintendo 64DD, Super Famicom, Nintendo 64, PlayStation, \n"
WITHOUT_NINTENDO_64 = HELP + "  Arcade, Nintendo 64DD, Super Famicom, PlayStation, \n"

GAME = ("--system", "Nintendo 64", "--fullscreen", "/games of mine/a: b/Quillet64.z64")


class MachineAres(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp()).resolve()
        self.addCleanup(shutil.rmtree, self.folder)
        self.path = self.folder / "bin"
        self.path.mkdir()
        for tool in TOOLS:
            (self.path / tool).symlink_to(shutil.which(tool))
        self.told = self.folder / "told"

    def put(self, name, body):
        program = self.path / name
        program.write_text(f"#!/bin/sh\n{body}\n")
        program.chmod(0o755)

    def put_ares(self, systems):
        """Lists its systems, and otherwise tells who it is, its process and its arguments."""
        (self.folder / "systems").write_text(systems)
        self.put("ares", f'if [ "$1" = --help ]; then\n'
                         f'[ -z "$DISPLAY$WAYLAND_DISPLAY" ] || exit 1\ncat {self.folder}/systems\nexit 0\nfi\n'
                         f'printf "%s\\n" ares $$ "$@" >{self.told}\nexit 5')

    def put_flatpak(self, installed):
        self.put("flatpak", f'if [ "$1" = info ]; then [ "$2" = dev.ares.ares ] && exit {0 if installed else 1}; fi\n'
                            f'printf "%s\\n" flatpak $$ "$@" >{self.told}\nexit 6')

    def start(self, *arguments, wrapper=WRAPPER):
        self.process = subprocess.Popen(
            [wrapper, *arguments], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            env={"PATH": str(self.path), "DISPLAY": ":99", "WAYLAND_DISPLAY": "wayland-9"})
        _, self.errors = self.process.communicate(timeout=30)
        return self.process.returncode

    def said(self):
        """What was started and its arguments; it has to be the very process that the wrapper was."""
        who, process, *arguments = self.told.read_text().splitlines()
        self.assertEqual(int(process), self.process.pid)
        return who, tuple(arguments)

    def test_the_package_is_started_where_it_has_the_nintendo_64(self):
        self.put_ares(WITH_NINTENDO_64)
        self.put_flatpak(installed=True)
        self.assertEqual(self.start(*GAME), 5)
        self.assertEqual(self.said(), ("ares", GAME))
        self.assertEqual(self.errors, "")

    def test_the_flatpak_is_started_where_the_package_lacks_the_nintendo_64(self):
        self.put_ares(WITHOUT_NINTENDO_64)
        self.put_flatpak(installed=True)
        self.assertEqual(self.start(*GAME), 6)
        self.assertEqual(self.said(), ("flatpak", ("run", r"--filesystem=/games of mine/a\: b",
                                                   "dev.ares.ares", *GAME)))
        self.assertEqual(self.errors, "")

    def test_the_flatpak_is_started_where_there_is_no_package(self):
        self.put_flatpak(installed=True)
        self.assertEqual(self.start(*GAME), 6)
        self.assertEqual(self.said()[0], "flatpak")

    def test_without_either_it_says_so(self):
        self.assertEqual(self.start(*GAME), 127)
        self.assertTrue(self.errors.startswith("Ares is not installed on this computer.\nInstall the package"))
        self.assertFalse(self.told.exists())

    def test_a_flatpak_without_ares_counts_as_none(self):
        self.put_flatpak(installed=False)
        self.assertEqual(self.start(*GAME), 127)
        self.assertIn("Ares is not installed", self.errors)
        self.assertFalse(self.told.exists())

    def test_a_package_that_lacks_the_nintendo_64_is_told_apart(self):
        self.put_ares(WITHOUT_NINTENDO_64)
        self.assertEqual(self.start(*GAME), 127)
        self.assertTrue(self.errors.startswith(
            "The Ares that is installed on this computer was built without the Nintendo 64.\nInstall"))
        self.assertFalse(self.told.exists())

    def test_a_package_that_needs_a_display_to_answer_counts_as_one_that_lacks_it(self):
        self.put("ares", f'[ -n "$DISPLAY" ] && touch {self.told}\necho "cannot open display" >&2\nexit 1')
        self.assertEqual(self.start(*GAME), 127)
        self.assertFalse(self.told.exists())

    def test_a_link_on_the_path_that_leads_back_is_not_followed(self):
        (self.path / "ares").symlink_to(WRAPPER.resolve())
        self.assertEqual(self.start(*GAME, wrapper=self.path / "ares"), 127)
        self.assertEqual(self.start(*GAME), 127)
        self.assertIn("Ares is not installed", self.errors)


if __name__ == "__main__":
    unittest.main()
