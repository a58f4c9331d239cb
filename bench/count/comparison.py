# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Sets the counts of two builds beside each other, and judges them."""

from collections.abc import Mapping, Sequence
from dataclasses import dataclass

LARGEST_CHANGE = 0.03  # that is not worth a word


@dataclass(frozen=True)
class Difference:
    """Instructions for one call of a function; None where there is no such function."""

    what: str
    before: float | None
    now: float | None

    @property
    def growth(self) -> float | None:
        if self.before is None or self.now is None:
            return None
        return self.now / self.before - 1

    @property
    def verdict(self) -> str:
        if self.now is None:
            return "NOT COUNTED"
        if self.before is None:
            return "new"
        if self.now > self.before * (1 + LARGEST_CHANGE):
            return "TOO MUCH"
        return "gain" if self.now < self.before * (1 - LARGEST_CHANGE) else ""

    @property
    def is_acceptable(self) -> bool:
        return self.verdict not in ("NOT COUNTED", "TOO MUCH")


def compare(before: Mapping[str, float | None], now: Mapping[str, float | None]) -> list[Difference]:
    return [Difference(what, before.get(what), now[what]) for what in now]


def table(differences: Sequence[Difference]) -> list[str]:
    width = max(len(difference.what) for difference in differences)
    lines = [f"{'instructions for each':{width}} {'before':>12} {'now':>12} {'growth':>8}"]
    for difference in differences:
        growth = "" if difference.growth is None else f"{difference.growth:+.1%}"
        figures = f"{_shown(difference.before):>12} {_shown(difference.now):>12} {growth:>8}"
        lines.append(f"{difference.what:{width}} {figures}  {difference.verdict}".rstrip())
    return lines


def _shown(figure: float | None) -> str:
    return "-" if figure is None else f"{figure:.0f}"
