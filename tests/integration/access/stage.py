# SPDX-License-Identifier: MIT
"""Where the launcher is tried: a home of its own, stand-in sites, and an emulator that does as it is told."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from screenreader import PATIENCE, Program, wait_for

PROGRAMS = pathlib.Path(os.environ["CARTLOOM_PROGRAMS"])
DEMO = PROGRAMS / "demo/cartloom-demo"
EMULATOR = PROGRAMS / "tests/scriptedchild"
ROM_MAKER = PROGRAMS / "demo/cartloom-make-rom"

PLIST = """<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>CFBundleExecutable</key><string>ares</string></dict></plist>
"""


def make_app(folder, mark=""):
    """An ares.app in the folder, whose program is the scripted child; the mark tells it from others."""
    contents = folder / "ares.app/Contents"
    (contents / "MacOS").mkdir(parents=True)
    (contents / "Info.plist").write_text(PLIST)
    (contents / "mark").write_text(mark)
    shutil.copy(EMULATOR, contents / "MacOS/ares")
    return folder / "ares.app"


def make_archive(file, ballast=0):
    """A release's archive; the ballast, in bytes, makes its download take a while."""
    with tempfile.TemporaryDirectory() as folder:
        app = make_app(pathlib.Path(folder))
        with open(app / "Contents/ballast", "wb") as filling:
            filling.truncate(ballast)
        subprocess.run(["bsdtar", "--format", "zip", "--options", "zip:compression=store",
                        "-C", folder, "-cf", file, "ares.app"], check=True)


def processes_of(folder):
    """The ids of the processes whose program lies in the folder."""
    ids = []
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                program = pathlib.Path(os.readlink(entry / "exe"))
            except OSError:
                continue  # ended meanwhile, or another user's
            if folder in program.parents:
                ids.append(int(entry.name))
    return ids


class LauncherTest(unittest.TestCase):
    """Each test begins with an empty home; nothing that it started is left afterwards."""

    @classmethod
    def setUpClass(cls):
        cls.files = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.files)
        cls.archive = cls.files / "ares-macos-universal.zip"
        make_archive(cls.archive)
        cls.game = cls.files / "Quillet64.z64"
        subprocess.run([ROM_MAKER, cls.game], check=True, stderr=subprocess.DEVNULL)

    def setUp(self):
        self.home = pathlib.Path(tempfile.mkdtemp()).resolve()
        self.addCleanup(shutil.rmtree, self.home)
        self.addCleanup(self._end_emulators)
        self.storage = self.home / "data/Quillet64 Player"
        self.started = self.home / "emulator-arguments"
        self.emulator_end = self.home / "emulator-end"

    def _end_emulators(self):
        self.emulator_end.touch()
        wait_for("every emulator ended", lambda: not processes_of(self.home))

    def launch(self, *then, tag="v148", archive=None, game=None):
        """The launcher; its emulator says what it was started with, and then does as told."""
        script = [f"args {self.started}", *then]
        program = Program(self.command(tag, archive, game), {"CARTLOOM_CHILD": "\n".join(script)}, self.files)
        self.addCleanup(program.end)
        # What is scrolled out of sight is not told: the window is made as tall as the page may become.
        subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "^Cartloom$",
                        "windowsize", "--sync", "%1", "480", "960"], check=True, stdout=subprocess.DEVNULL)
        return program

    def command(self, tag="v148", archive=None, game=None):
        return [DEMO, "--home", self.home, "--tag", tag,
                "--emulator", archive or self.archive, "--game", game or self.game]

    def install(self, tag="v148"):
        """What an earlier set-up would have left."""
        make_app(self.storage / "Ares", tag)
        (self.storage / "ares-version.txt").write_text(tag)
        shutil.copy(self.game, self.storage / "Quillet64.z64")

    def installed_tag(self):
        return (self.storage / "ares-version.txt").read_text().strip()

    @property
    def playing_until_told(self):
        return f"wait {self.emulator_end}"

    def wait_for_emulator(self):
        return wait_for("the emulator started", lambda: self.started.exists() and
                        self.started.read_text().splitlines(), PATIENCE)
