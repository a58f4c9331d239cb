# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How the cost of a job grows: with the size, the number of files, the number of cards."""

import statistics
from collections.abc import Iterator, Sequence
from contextlib import ExitStack
from dataclasses import dataclass

import cores
import load
import messages
from card import NAME, measured_card, servers, swallowed_log
from effort import MEBIBYTE, Effort
from jobs_client import own_folders
from paths import program
from tarvelsim import Card, Lan

_BROADCAST = "255.255.255.255:50003%lan0"
_PATIENCE = "2"  # seconds in which all cards must have been heard


@dataclass(frozen=True)
class Point:
    job: str
    x: int
    unit: str  # of x
    milliseconds: float


def growth_points(lan: Lan, effort: Effort) -> Iterator[Point]:
    yield from _uploads(lan, effort)
    yield from _versions(lan, effort)
    with own_folders(), ExitStack() as running:
        cards: list[Card] = []
        for number in effort.cards:
            while len(cards) < number:
                cards.append(running.enter_context(lan.card(f"card{len(cards) + 1}")))
            yield from _many_cards(cards, effort)


def _median(samples: Sequence[int]) -> float:
    return statistics.median(samples) / 1e6


def _uploads(lan: Lan, effort: Effort) -> Iterator[Point]:
    with measured_card(lan) as card, swallowed_log(card), servers(card, ["daemon"]) as (daemon,):
        for mebibytes in (1, 4, 16, 64, 256):
            size = mebibytes * MEBIBYTE
            if size > effort.upload_size:
                return
            (samples,) = load.ask(
                "upload",
                messages.upload_of(size),
                [daemon.address],
                rounds=effort.growth_rounds,
                size=size,
                core=cores.OTHER,
            )
            yield Point("upload", mebibytes, "MiB", _median(samples.times))


def _versions(lan: Lan, effort: Effort) -> Iterator[Point]:
    for files in (1, 2, 5, 10, 20, 40):
        with measured_card(lan, files) as card, swallowed_log(card), servers(card, ["daemon"]) as (daemon,):
            rounds = effort.growth_rounds * 50
            (samples,) = load.ask("kept", messages.VERSIONS, [daemon.address], rounds=rounds)
            yield Point("versions", files, "files", _median(samples.times))


def _many_cards(cards: Sequence[Card], effort: Effort) -> Iterator[Point]:
    """Every card hears a request by broadcast, logs it, and drops it unless it is meant."""
    number = len(cards)
    (samples,) = load.ask("datagram", messages.IP_GET, [_BROADCAST], rounds=effort.growth_rounds)
    yield Point("IP configuration get, by broadcast", number, "cards", _median(samples.times))
    names = f"card[1-{number}]" if number > 1 else NAME
    discover = ["-i", "lan0", "discover", "--names", names, "--expect", str(number)]
    addresses = [card.address("eth0") or "" for card in cards]
    for job, words in (("discover", discover), ("versions of all", ["versions", *addresses])):
        command = [program("tarvelctl"), "--timeout", _PATIENCE, *words]
        (samples,) = load.run_in_turn([command], effort.growth_rounds)
        yield Point(f"client, {job}", number, "cards", _median(samples.times))


def growth_table(points: Sequence[Point]) -> list[str]:
    """A line for each job, its points one behind the other."""
    jobs = list(dict.fromkeys(point.job for point in points))
    width = max(len(job) for job in jobs)
    lines = []
    for job in jobs:
        own = [point for point in points if point.job == job]
        figures = "  ".join(f"{point.x}: {point.milliseconds:.3g} ms" for point in own)
        lines.append(f"{job:{width}}  {own[0].unit:5}  {figures}")
    return lines
