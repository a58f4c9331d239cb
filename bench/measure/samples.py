# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What was measured for the sides of one job, and the figures made of it."""

import statistics
from collections.abc import Sequence
from dataclasses import dataclass

SLOW = 5_000_000  # nanoseconds


@dataclass(frozen=True)
class Samples:
    """Nanoseconds of every request to one side, in their order; `turn` of them in a row before the other side's."""

    times: Sequence[int]
    turn: int = 1

    def turns(self) -> list[int]:
        return [sum(self.times[i : i + self.turn]) for i in range(0, len(self.times), self.turn)]

    def percentile(self, percent: float) -> float:
        """In microseconds."""
        ordered = sorted(self.times)
        return ordered[min(len(ordered) - 1, int(len(ordered) * percent / 100))] / 1000

    def slow(self) -> int:
        return sum(time > SLOW for time in self.times)


def parse(output: str, sides: int, turn: int = 1) -> list[Samples]:
    """Reads lines of a side's number and nanoseconds."""
    times: list[list[int]] = [[] for _ in range(sides)]
    for line in output.splitlines():
        side, time = line.split()
        times[int(side)].append(int(time))
    return [Samples(of_side, turn) for of_side in times]


@dataclass(frozen=True)
class Ratio:
    """The median of the ratios of turns that followed each other, and their quartiles."""

    median: float
    lower: float
    upper: float

    @staticmethod
    def of(values: Sequence[float]) -> "Ratio":
        if len(values) < 2:
            return Ratio(values[0], values[0], values[0])
        lower, median, upper = statistics.quantiles(values, n=4, method="inclusive")
        return Ratio(median, lower, upper)


def ratio(measured: Samples, floor: Samples) -> Ratio:
    return Ratio.of([one / other for one, other in zip(measured.turns(), floor.turns(), strict=True)])
