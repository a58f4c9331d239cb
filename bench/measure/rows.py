# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The lines of the table."""

from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from typing import Any

from goals import Goal, goal_of
from samples import Ratio, Samples, ratio


@dataclass(frozen=True)
class Row:
    """One job beside one floor, or one value that has no floor. With neither it could not be measured: `note` says why."""

    job: str
    against: str | None = None
    ratio: Ratio | None = None
    value: float | None = None
    unit: str = ""
    times: Samples | None = None
    floor_times: Samples | None = None
    cpu: float | None = None
    note: str = ""

    @property
    def goal(self) -> Goal | None:
        return goal_of(self.job, self.against)

    @property
    def met(self) -> bool | None:
        figure = self.value if self.ratio is None else self.ratio.median
        return None if self.goal is None or figure is None else self.goal.is_met_by(figure)

    def to_json(self) -> dict[str, Any]:
        figures: dict[str, Any] = {"job": self.job}
        if self.ratio is not None:
            figures |= {"against": self.against, "ratio": self.ratio.median}
            figures |= {"lower_quartile": self.ratio.lower, "upper_quartile": self.ratio.upper}
        else:
            figures |= {"value": self.value, "unit": self.unit}
        figures |= _times("", self.times) | _times("floor_", self.floor_times)
        if self.cpu is not None:
            figures["cpu_ratio"] = self.cpu
        if self.note:
            figures["note"] = self.note
        return figures | {"goal": self.goal.to_json() if self.goal else None, "met": self.met}


def _times(prefix: str, samples: Samples | None) -> dict[str, Any]:
    if samples is None:
        return {} if prefix else {"p50_us": None, "p99_us": None, "max_us": None}
    percentiles = {"p50_us": 50, "p99_us": 99, "max_us": 100}
    return {prefix + name: samples.percentile(percent) for name, percent in percentiles.items()}


def compare(job: str, sides: dict[str, Samples], cpu: dict[str, float] | None = None) -> list[Row]:
    """A row for each side after the first one, which is the measured side."""
    name, *floors = sides
    used = cpu or {}
    return [
        Row(
            job,
            floor,
            ratio(sides[name], sides[floor]),
            times=sides[name],
            floor_times=sides[floor],
            cpu=used[name] / used[floor] if used.get(floor) else None,
        )
        for floor in floors
    ]


HEADINGS = ("job", "against", "ratio", "quartiles", "goal", "met", "p50 us", "p99 us", "max us", "cpu ratio")
_LEFT = 2  # so many columns of words


def cells(row: Row) -> list[str]:
    if row.ratio is not None:
        figure, spread = f"{row.ratio.median:.3f}", f"{row.ratio.lower:.3f}-{row.ratio.upper:.3f}"
    else:
        figure, spread = "-" if row.value is None else f"{row.value:g} {row.unit}".rstrip(), ""
    met = {None: "", True: "yes", False: "NO"}[row.met]
    goal = str(row.goal) if row.goal else ""
    spans = [_span(row, percent) for percent in (50, 99, 100)]
    cpu = f"{row.cpu:.3f}" if row.cpu is not None else ""
    return [row.job, row.against or "", figure, spread, goal, met, *spans, cpu]


def _span(row: Row, percent: float) -> str:
    """The measured side's time, and the floor's behind a stroke."""
    both = [samples.percentile(percent) for samples in (row.times, row.floor_times) if samples is not None]
    return " / ".join(f"{time:.0f}" for time in both)


def table(rows: Iterable[Row]) -> list[str]:
    """Headings, a line for each row, and below them the notes."""
    measured = list(rows)
    lines = [list(HEADINGS), *(cells(row) for row in measured)]
    widths = [max(len(line[column]) for line in lines) for column in range(len(HEADINGS))]
    notes = [f"{row.job}: {row.note}" for row in measured if row.note]
    return [*("  ".join(_aligned(line, widths)).rstrip() for line in lines), *([""] if notes else []), *notes]


def _aligned(line: Sequence[str], widths: Sequence[int]) -> Iterable[str]:
    for column, (cell, width) in enumerate(zip(line, widths, strict=True)):
        yield cell.ljust(width) if column < _LEFT else cell.rjust(width)
