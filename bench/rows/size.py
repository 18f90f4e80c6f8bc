# SPDX-License-Identifier: MIT
"""The size of the program as it is shipped, without its symbols."""

from harness.report import bounded

ROWS = ("size",)


def measure(place, _wanted, _pairs):
    stripped = place.work / "cartloom-stripped"
    place.run("strip", "-o", str(stripped), place.program("src/cartloom"))
    return [bounded("size of the stripped program", [stripped.stat().st_size / 1e6], 1.5, "MB", digits=2)]
