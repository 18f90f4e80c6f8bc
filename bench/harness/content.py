# SPDX-License-Identifier: MIT
"""What is downloaded: a release of the emulator, a game, files of any size. Made once, kept in build/bench."""

import base64
import os
import shutil
import tempfile
from pathlib import Path

PROPERTY_LIST = """<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict><key>CFBundleExecutable</key><string>ares</string></dict></plist>
"""
GAME_HEADER = bytes.fromhex("80371240")
GAME_BYTES = 16_000_000
PIECE_BYTES = 5_000_000


def folder_of(place):
    folder = place.root / "build/bench/content"
    folder.mkdir(parents=True, exist_ok=True)
    return folder


def make_app(place, folder):
    """An installed emulator, which tells when it was started."""
    contents = folder / "ares.app/Contents"
    (contents / "MacOS").mkdir(parents=True)
    (contents / "Info.plist").write_text(PROPERTY_LIST)
    shutil.copy(place.program("bench/bench-emulator"), contents / "MacOS/ares")
    return contents


def make_release(place):
    """An archive of about 80 MB: half of it noise, half of it what packing makes a quarter smaller."""
    archive = folder_of(place) / "ares-macos-universal.zip"
    emulator = Path(place.program("bench/bench-emulator"))
    if archive.exists() and archive.stat().st_mtime > emulator.stat().st_mtime:
        return archive
    with tempfile.TemporaryDirectory(dir=folder_of(place)) as work:
        resources = make_app(place, Path(work)) / "Resources"
        resources.mkdir()
        for piece in range(8):
            (resources / f"noise-{piece}").write_bytes(os.urandom(PIECE_BYTES))
            (resources / f"text-{piece}").write_bytes(base64.encodebytes(os.urandom(PIECE_BYTES)))
        place.run("bsdtar", "--format", "zip", "-C", work, "-cf", str(archive), "ares.app")
    return archive


def make_game(place):
    game = folder_of(place) / "Quillet64.z64"
    if not game.exists():
        game.write_bytes(GAME_HEADER + os.urandom(GAME_BYTES - len(GAME_HEADER)))
    return game


def make_file(place, megabytes):
    """A file of noise; the same noise again and again, which nothing on the way notices."""
    file = folder_of(place) / f"{megabytes}.bin"
    if not file.exists() or file.stat().st_size != megabytes * 1_000_000:
        noise = os.urandom(1_000_000)
        with file.open("wb") as stream:
            for _ in range(megabytes):
                stream.write(noise)
    return file


def set_up(place, home):
    """Makes everything installed in a home folder, as after the first press."""
    support = Path(home["XDG_DATA_HOME"]) / "Quillet64 Player"
    make_app(place, support / "Ares")
    (support / "ares-version.txt").write_text("v148")
    shutil.copy(make_game(place), support / "Quillet64.z64")
