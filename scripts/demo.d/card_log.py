# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card's log made short: what it logs for each request is shown once."""

import re
from collections.abc import Iterable, Iterator

_OPENING = re.compile(r"tarveld: (Got datagram|Connection from|Starting\.\.\.)|card: ")
_CHANGING = re.compile(r"\d+\.\d+\.\d+\.\d+|port \d+|/\d+$|ocket \(\d+\)", re.MULTILINE)  # who asked, and over which socket


def shortened(lines: Iterable[str]) -> Iterator[str]:
    """The lines, with what was logged before for another request like it counted instead."""
    seen: set[str] = set()
    again = 0
    for request in _requests(lines):
        kind = _CHANGING.sub("", "\n".join(request))
        if kind in seen:
            again += 1
            continue
        yield from _counted(again)
        again = 0
        seen.add(kind)
        yield from request
    yield from _counted(again)


def _requests(lines: Iterable[str]) -> Iterator[list[str]]:
    """What belongs together: the lines from one request, or event of the card, to the next."""
    request: list[str] = []
    for line in lines:
        if request and _OPENING.search(line):
            yield request
            request = []
        request.append(line)
    if request:
        yield request


def _counted(again: int) -> Iterator[str]:
    if again:
        yield f"... {again} more of the above"
