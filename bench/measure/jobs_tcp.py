# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Requests over TCP, beside both floors."""

from collections.abc import Iterator

import cores
import load
import messages
from card import servers
from effort import Effort
from rows import Row, compare
from samples import Ratio, Samples
from server import Server
from tarvelsim import Card

_SIDES = ("daemon", "same", "bare")


def timed(
    started: list[Server], kind: str, request: bytes, *, rounds: int, turn: int = 1, size: int = 0, core: int = cores.WORK
) -> tuple[dict[str, Samples], dict[str, float]]:
    """The samples of each server and the nanoseconds that it computed meanwhile."""
    addresses = [server.address for server in started]
    load.ask(kind, request, addresses, rounds=2, turn=turn, size=size, core=core)  # fills the caches
    before = [server.cpu() for server in started]
    samples = load.ask(kind, request, addresses, rounds=rounds, turn=turn, size=size, core=core)
    used = [float(server.cpu() - start) for server, start in zip(started, before, strict=True)]
    names = [server.name for server in started]
    return dict(zip(names, samples, strict=True)), dict(zip(names, used, strict=True))


def tcp_rows(card: Card, effort: Effort) -> Iterator[Row]:
    with servers(card, _SIDES) as started:
        yield from compare("unknown command", *_quick(started, "kept", messages.UNKNOWN, effort))
        sides, cpu = _quick(started, "kept", messages.VERSIONS, effort)
        yield from compare("versions", sides, cpu)
        yield from _tail("versions", sides)
        yield from compare("connect, versions, close", *_quick(started, "fresh", messages.VERSIONS, effort))
        sides, cpu = timed(started, "kept", messages.TIME_GET, rounds=effort.shell)
        yield from compare("time reference get", sides, cpu)


def _quick(
    started: list[Server], kind: str, request: bytes, effort: Effort
) -> tuple[dict[str, Samples], dict[str, float]]:
    return timed(started, kind, request, rounds=effort.quick, turn=effort.turn)


def _tail(job: str, sides: dict[str, Samples]) -> Iterator[Row]:
    """The slow ones: beside those of the floor, and counted."""
    slowest = [sides[name].percentile(99) for name in ("daemon", "same")]
    yield Row(f"{job}, p99", "same", Ratio.of([slowest[0] / slowest[1]]))
    for name in ("daemon", "same"):
        samples = sides[name]
        yield Row(f"{job}, {name}: over 5 ms of {len(samples.times)}", value=samples.slow())
