# SPDX-License-Identifier: MIT
"""The whole installation of a release, and the same with curl, bsdtar and sync by hand."""

import shlex

from harness import content
from harness.report import compared
from harness.server import Server
from rows.download import alternate

ROWS = ("install",)

BOUND = 1.30


def measure(place, _wanted, pairs):
    archive = content.make_release(place)
    server = Server(place, "install")
    home = place.home("install")
    data = home["XDG_DATA_HOME"]
    by_hand = place.work / "by-hand"
    steps = (f"curl --silent --fail --http1.1 --output {by_hand}/ares.zip {server.address(archive.name)}"
             f" && bsdtar -x -f {by_hand}/ares.zip -C {by_hand} && rm {by_hand}/ares.zip"
             f" && sync --file-system {by_hand}")
    commands = {"ours": [place.program("bench/wired-install")], "by hand": ["sh", "-c", shlex.quote(steps)]}
    prepare = {"ours": f"rm -rf {data}", "by hand": f"sh -c 'rm -rf {by_hand}; mkdir {by_hand}'"}
    taken = alternate(place, commands, pairs, {**home, **server.variables()}, prepare)
    server.stop()
    megabytes = round(archive.stat().st_size / 1e6)
    return [compared(f"installing a release of {megabytes} MB", taken["ours"]["wall"],
                     taken["by hand"]["wall"], BOUND, "ms", "curl, bsdtar -x, sync", 0)]
