# SPDX-License-Identifier: MIT
"""From the start to the first window that is mapped and painted, and the memory two seconds later."""

import json
from statistics import median

from harness.report import compared

ROWS = ("start", "memory")

LAUNCHERS = {"mupen64plus-qt": "/usr/games/mupen64plus-qt", "cen64-qt": "/usr/bin/cen64-qt"}
MEBIBYTE = 1024
FIGURES = {
    "visible_ms": ("start to the first visible window", "ms", 1),
    "resident_kib": ("resident memory 2 s after the start", "MiB", MEBIBYTE),
    "proportional_kib": ("proportional memory 2 s after the start", "MiB", MEBIBYTE),
}
# Against the better of the other launchers.
BOUNDS = {"visible_ms": 0.40, "resident_kib": 0.60, "proportional_kib": 0.55}


def measure(place, wanted, pairs):
    programs = {"ours": place.program("src/cartloom"), "bare window": place.program("bench/bare-window"),
                "bare window with a word": place.program("bench/text-window"), **LAUNCHERS}
    samples = {name: {figure: [] for figure in FIGURES} for name in programs}
    # The first round is not counted: it fills the caches of all of them.
    for turn in range(pairs + 1):
        for name, program in programs.items():
            seen = json.loads(place.run(place.program("bench/first-window"), program))
            if turn > 0:
                for figure, value in seen.items():
                    samples[name][figure].append(value)
    figures = [figure for figure in FIGURES if wanted("start" if figure == "visible_ms" else "memory")]
    return [row for figure in figures for row in rows_of(figure, samples)]


def rows_of(figure, samples):
    what, unit, scale = FIGURES[figure]
    values = {name: [value / scale for value in taken[figure]] for name, taken in samples.items()}
    best = min(LAUNCHERS, key=lambda name: median(values[name]))
    yield compared(what, values["ours"], values[best], BOUNDS[figure], unit, best)
    for name in ("bare window", "bare window with a word"):
        yield compared(what, values["ours"], values[name], None, unit, name)
