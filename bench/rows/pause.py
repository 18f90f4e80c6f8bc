# SPDX-License-Identifier: MIT
"""The longest pause of the main thread from the first press to playing, downloads and unpacking included."""

import json
import shutil
from statistics import median

from harness.report import Row
from harness.server import Server

ROWS = ("pause",)

FRAME_MS = 16


def measure(place, _wanted, pairs):
    server = Server(place, "pause")
    seen = []
    for turn in range(pairs):
        home = place.home(f"pause-{turn}")
        told = str(place.work / f"pause-{turn}-started")
        launcher = place.start(place.program("bench/wired-cartloom"),
                               environment={**home, **server.variables(), "BENCH_STARTED": told,
                                            "BENCH_SECONDS": "60"})
        seen.append(json.loads(place.run(place.program("bench/longest-pause"), told)))
        place.end(launcher)
        shutil.rmtree(home["HOME"])
    server.stop()
    longest = [each["longest_ms"] for each in seen]
    return [Row("longest pause of the main thread, press to playing", f"{median(longest):.1f} ms",
                "a frame of 60 Hz", None, f"≤ {FRAME_MS} ms", median(longest) <= FRAME_MS, {"ours": seen})]
