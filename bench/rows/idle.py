# SPDX-License-Identifier: MIT
"""What the launcher costs while nothing happens: its window open, and while the game is played."""

import os
import time
from pathlib import Path
from statistics import median

from harness import content
from harness.report import Row

ROWS = ("idle",)

SECONDS = 30
SETTLED_AFTER = 3


def measure(place, _wanted, pairs):
    """All samples at once, each launcher on a display of its own."""
    rows = []
    for state in ("idle", "playing"):
        launchers = [open_launcher(place, f"{state}-{number}", state == "playing") for number in range(pairs)]
        time.sleep(SETTLED_AFTER)
        before = [cost(launcher.pid) for launcher in launchers]
        time.sleep(SECONDS)
        after = [cost(launcher.pid) for launcher in launchers]
        for launcher in launchers:
            place.end(launcher)
        ticks = [late[0] - early[0] for early, late in zip(before, after)]
        wakes = [wakes_between(early[1], late[1]) / SECONDS for early, late in zip(before, after)]
        rows += [Row(f"processor time in {SECONDS} s, {state}", f"{median(ticks):g} ticks", "zero", None,
                     "0 ticks", median(ticks) == 0, {"ours": ticks}),
                 Row(f"wake-ups in a second, {state}", f"{median(wakes):.2f}", "zero", None, "≤ 1",
                     median(wakes) <= 1, {"ours": wakes})]
    return rows


def open_launcher(place, name, playing):
    home = place.home(name)
    content.set_up(place, home)
    told = str(place.work / f"{name}-started")
    surroundings = {**home, "DISPLAY": place.display(), "BENCH_STARTED": told, "BENCH_SECONDS": "600"}
    launcher = place.start(place.program("src/cartloom"), environment=surroundings)
    if playing:
        place.run(place.program("bench/press-to-play"), told, environment=surroundings)
    return launcher


def cost(process):
    """Ticks of processor time, and how often each thread of the process was given the processor."""
    fields = Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()
    ticks = int(fields[11]) + int(fields[12])
    wakes = {}
    for task in os.listdir(f"/proc/{process}/task"):
        for line in Path(f"/proc/{process}/task/{task}/status").read_text().splitlines():
            if "ctxt_switches" in line:
                wakes[task] = wakes.get(task, 0) + int(line.split()[1])
    return ticks, wakes


def wakes_between(before, after):
    """A thread that has ended in between is not among them: it woke up once, to end."""
    ended = len(before.keys() - after.keys())
    return sum(count - before.get(task, 0) for task, count in after.items()) + ended
