# SPDX-License-Identifier: MIT
"""What has been measured, as a table for people and as a file for programs."""

import json
from dataclasses import asdict, dataclass, field
from statistics import median


@dataclass
class Row:
    """One line of the table. The samples are everything that its figures were computed from."""

    what: str
    ours: str
    yardstick: str
    ratio: float | None
    bound: str
    holds: bool | None
    samples: dict = field(default_factory=dict)


def ratio_of(ours, yardstick):
    """The median of the ratios of pairs that were measured in turn."""
    return median(mine / other for mine, other in zip(ours, yardstick, strict=True))


def compared(what, ours, yardstick, bound, unit, name="yardstick", digits=1):
    """A row that holds if the median ratio of the pairs is within the bound. Without a bound it is only a figure."""
    ratio = ratio_of(ours, yardstick)
    return Row(what, f"{median(ours):.{digits}f} {unit}",
               f"{name}: {median(yardstick):.{digits}f} {unit}", ratio, "" if bound is None else f"≤ {bound:.2f}",
               None if bound is None else ratio <= bound, {"ours": ours, name: yardstick})


def bounded(what, ours, bound, unit, digits=1):
    """A row that holds when the median of the samples is within the bound."""
    middle = median(ours)
    return Row(what, f"{middle:.{digits}f} {unit}", "", None, f"≤ {bound:g} {unit}", middle <= bound,
               {"ours": ours})


def told(what, ours, unit, digits=1):
    """A row that is only told; nothing is asked of it."""
    return Row(what, f"{median(ours):.{digits}f} {unit}", "", None, "", None, {"ours": ours})


def _cells(row):
    holds = {True: "yes", False: "**no**", None: ""}[row.holds]
    ratio = "" if row.ratio is None else f"{row.ratio:.2f}"
    return [row.what, row.ours, row.yardstick, ratio, row.bound, holds]


def table(rows):
    head = ["what", "ours", "yardstick", "ratio", "bound", "holds"]
    lines = [head, ["---", "---", "---", "---:", "---", "---"], *map(_cells, rows)]
    return "\n".join("| " + " | ".join(cells) + " |" for cells in lines)


def write(path, rows, load):
    """The raw samples, with how busy the machine was before and after."""
    path.parent.mkdir(parents=True, exist_ok=True)
    content = {"load_average": load, "rows": [asdict(row) for row in rows]}
    path.write_text(json.dumps(content, indent=1, ensure_ascii=False) + "\n")
