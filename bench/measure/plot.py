# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Draws how costs grow: both axes logarithmic, so that what grows in proportion rises by one decade a decade."""

import math
from collections.abc import Sequence

from growth import Point

_WIDTH, _HEIGHT = 900, 460
_LEFT, _RIGHT, _TOP, _BOTTOM = 70, 270, 20, 50
_COLOURS = ("#1b6ca8", "#c0392b", "#1e8449", "#7d3c98", "#b9770e", "#444444")


class _Axis:
    """Whole decades around the values, laid between two places of the picture."""

    def __init__(self, values: Sequence[float], begin: float, end: float) -> None:
        self.first = math.floor(math.log10(min(values)))
        self.last = max(math.ceil(math.log10(max(values))), self.first + 1)
        self._begin, self._end = begin, end

    def place(self, value: float) -> float:
        share = (math.log10(value) - self.first) / (self.last - self.first)
        return self._begin + share * (self._end - self._begin)

    def decades(self) -> list[float]:
        return [10.0**exponent for exponent in range(self.first, self.last + 1)]


def _text(x: float, y: float, text: str, anchor: str = "middle", colour: str = "#222") -> str:
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{colour}">{text}</text>'


def _line(x1: float, y1: float, x2: float, y2: float) -> str:
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="#ddd"/>'


def _grid(across: _Axis, up: _Axis) -> list[str]:
    right, bottom = _WIDTH - _RIGHT, _HEIGHT - _BOTTOM
    parts = []
    for value in across.decades():
        parts.append(_line(across.place(value), _TOP, across.place(value), bottom))
        parts.append(_text(across.place(value), bottom + 18, f"{value:g}"))
    for value in up.decades():
        parts.append(_line(_LEFT, up.place(value), right, up.place(value)))
        parts.append(_text(_LEFT - 8, up.place(value) + 4, f"{value:g} ms", "end"))
    return [*parts, _text((_LEFT + right) / 2, _HEIGHT - 8, "MiB, files or cards")]


def _curve(points: Sequence[Point], across: _Axis, up: _Axis, colour: str) -> list[str]:
    places = [(across.place(point.x), up.place(point.milliseconds)) for point in points]
    path = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
    dots = [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in places]
    return [f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="1.5"/>', *dots]


def plot(points: Sequence[Point]) -> str:
    across = _Axis([point.x for point in points], _LEFT, _WIDTH - _RIGHT)
    up = _Axis([point.milliseconds for point in points], _HEIGHT - _BOTTOM, _TOP)
    parts = _grid(across, up)
    for number, job in enumerate(dict.fromkeys(point.job for point in points)):
        own = [point for point in points if point.job == job]
        colour = _COLOURS[number % len(_COLOURS)]
        parts += _curve(own, across, up, colour)
        parts.append(_text(_WIDTH - _RIGHT + 20, _TOP + 20 + 22 * number, f"{job} ({own[0].unit})", "start", colour))
    head = f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {_WIDTH} {_HEIGHT}" font-family="sans-serif"'
    return "\n".join([f'{head} font-size="13">', '<rect width="100%" height="100%" fill="white"/>', *parts, "</svg>"]) + "\n"
