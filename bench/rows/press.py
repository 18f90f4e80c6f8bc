# SPDX-License-Identifier: MIT
"""From the press to the emulator's first instruction, everything installed."""

from statistics import median

from harness import content
from harness.report import Row
from harness.surroundings import children_of

ROWS = ("press",)

ALLOWED_MS = 3
# A run that is shorter is taken for a failed start, and the launcher shows a message.
PLAYING_SECONDS = "4"


def measure(place, _wanted, pairs):
    home = place.home("press")
    content.set_up(place, home)
    told = str(place.work / "started")
    launcher = place.start(place.program("src/cartloom"),
                           environment={**home, "BENCH_STARTED": told, "BENCH_SECONDS": PLAYING_SECONDS})
    ours, alone = [], []
    for turn in range(pairs + 1):
        pressed = press(place, told)
        spawned = float(place.run(place.program("bench/spawn-alone"), told + "-alone",
                                  place.program("bench/bench-emulator"), "--system", "Nintendo 64",
                                  str(content.make_game(place)),
                                  environment={"BENCH_STARTED": told + "-alone"}))
        # The first press finds nothing in the caches.
        if turn > 0:
            ours.append(pressed)
            alone.append(spawned)
        # The launcher is at rest again when it has seen the end.
        place.wait_until("the emulator's end", lambda: not children_of(launcher.pid))
    place.end(launcher)
    more = [mine - other for mine, other in zip(ours, alone)]
    return [Row("press to the emulator's first instruction", f"{median(ours):.2f} ms",
                f"posix_spawn alone: {median(alone):.2f} ms", median(ours) / median(alone),
                f"≤ alone + {ALLOWED_MS} ms", median(more) <= ALLOWED_MS, {"ours": ours, "alone": alone})]


def press(place, told):
    return float(place.run(place.program("bench/press-to-play"), told))
