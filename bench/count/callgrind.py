# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Reads what callgrind writes down: how many instructions each function has cost, with all that it called."""

import re
from collections import defaultdict
from collections.abc import Iterable
from dataclasses import dataclass, field

_NAME = re.compile(r"\((\d+)\)(?: (.*))?")


@dataclass
class Profile:
    inclusive: dict[str, int] = field(default_factory=lambda: defaultdict(int))
    calls: dict[str, int] = field(default_factory=lambda: defaultdict(int))

    def per_call(self, function: str) -> float | None:
        """None if the function was not called, or is not there under a name of its own."""
        calls = self.calls.get(function, 0)
        return self.inclusive[function] / calls if calls else None


class _Names:
    """A name is written out once, and is a number from then on."""

    def __init__(self) -> None:
        self._names: dict[str, str] = {}

    def resolve(self, text: str) -> str:
        match = _NAME.fullmatch(text)
        if match is None:
            return text
        number, name = match.groups()
        if name is not None:
            self._names[number] = name.partition("(")[0].partition("'")[0]
        return self._names[number]


def parse(lines: Iterable[str]) -> Profile:
    """Of a file made with --dump-line=no; without the arguments of the functions."""
    profile, names = Profile(), _Names()
    function = called = ""
    after_call = False
    for line in lines:
        key, _, value = line.rstrip("\n").partition("=")
        if key == "fn":
            function = names.resolve(value)
        elif key == "cfn":
            called = names.resolve(value)
        elif key == "calls":
            profile.calls[called] += int(value.split()[0])
            after_call = True
        elif line.startswith(("+", "-", "*")) or line[:1].isdigit():
            _, *cost = line.split()
            # Who calls itself has the callee's cost in its own already.
            if cost and not (after_call and called == function):
                profile.inclusive[function] += int(cost[0])
            after_call = False
    return profile
