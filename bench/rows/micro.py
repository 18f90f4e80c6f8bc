# SPDX-License-Identifier: MIT
"""What takes microseconds: the Google Benchmark programs, and a report of a download's progress."""

import json
from statistics import median

from harness.report import Row, bounded, ratio_of, told

ROWS = ("rom-check", "patterns", "texts", "progress")

ROM_MICROSECONDS = 50
ROM_RATIO = 1.2
PATTERN_RATIO = 2.2
PROGRESS_MICROSECONDS = 100


def measure(place, wanted, pairs):
    groups = {"rom-check": rom_check, "patterns": patterns, "texts": texts, "progress": progress}
    return [row for name, group in groups.items() if wanted(name) for row in group(place, pairs)]


def times(place, program, pairs):
    """The repetitions of each benchmark in microseconds, taken in turn."""
    output = place.run(place.program(f"bench/micro-{program}"), f"--benchmark_repetitions={pairs}",
                       "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.05",
                       "--benchmark_format=json")
    to_microseconds = {"ns": 1e-3, "us": 1.0, "ms": 1e3}
    taken = {}
    for run in json.loads(output)["benchmarks"]:
        if run.get("error_occurred"):
            raise RuntimeError(f"{run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            taken.setdefault(run["run_name"], []).append(run["real_time"] * to_microseconds[run["time_unit"]])
    return taken


def rom_check(place, pairs):
    taken = times(place, "rom-check", pairs)
    small, large = taken["romCheck/1000000"], taken["romCheck/128000000"]
    yield bounded("ROM check of a file of 1 MB", small, ROM_MICROSECONDS, "µs")
    yield bounded("ROM check of a file of 128 MB", large, ROM_MICROSECONDS, "µs")
    ratio = ratio_of(large, small)
    yield Row("ROM check, 128 MB to 1 MB", f"{median(large):.1f} µs", f"1 MB: {median(small):.1f} µs",
              ratio, f"≤ {ROM_RATIO:.2f}", ratio <= ROM_RATIO, {"128 MB": large, "1 MB": small})


def patterns(place, pairs):
    """The worst of the kinds of near-matches decides."""
    taken = times(place, "page-patterns", pairs)
    by_kind = {}
    for name, values in sorted(taken.items(), key=lambda item: int(item[0].split("/")[2])):
        by_kind.setdefault(name.split("/")[1], []).append(values)
    small, large = max(by_kind.values(), key=lambda pair: ratio_of(pair[1], pair[0]))
    ratio = ratio_of(large, small)
    yield Row("page patterns, 10 MB to 5 MB of near-matches", f"{median(large) / 1000:.1f} ms",
              f"5 MB: {median(small) / 1000:.1f} ms", ratio, f"≤ {PATTERN_RATIO:.2f}",
              ratio <= PATTERN_RATIO, taken)


def texts(place, pairs):
    taken = times(place, "texts", pairs)
    yield told("words for a byte count", taken["byteCount"], "µs", 2)
    yield told("name of the program in a property list", taken["propertyList"], "µs")


def progress(place, _pairs):
    lines = place.run(place.program("bench/progress-report")).split("\n")
    costs = [tuple(map(float, line.split())) for line in lines if line]
    yield bounded("one progress report through to the label, main thread", [cost[0] for cost in costs],
                  PROGRESS_MICROSECONDS, "µs")
    yield told("the same, and drawing the frame that shows it", [cost[1] for cost in costs], "µs")
