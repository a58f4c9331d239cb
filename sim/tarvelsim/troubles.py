# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What is wrong with some cards of a fleet, so that what is to be done about it can be rehearsed.

The same seed makes the same troubles for as many cards on as many LANs.
"""

import random
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from enum import Enum
from ipaddress import IPv4Address
from typing import Any

from .plan import CARD_DEVICES, Place

STANDSTILL = 1.5  # seconds
_SHARE = 0.03  # of all cards have one kind of trouble
_FOR_ALL_KINDS = 10  # cards are enough for one of each
_ELSEWHERE = ("172.16.0.0", "172.17.0.0")  # networks of no LAN
_FIRST_HOST = 10


class Kind(Enum):
    """With the words for it."""

    SAME_ADDRESS = "with the addresses of another"
    SAME_NAME = "with the name of another"
    OFF = "switched off"
    NO_DAEMON = "up, without the daemon"
    SLOW = f"slow: the daemon stands still for {STANDSTILL:g} seconds again and again"
    MISADDRESSED = "with addresses of other networks"


_OF_TWO = (Kind.SAME_ADDRESS, Kind.SAME_NAME)


@dataclass(frozen=True)
class Trouble:
    kind: Kind
    other: int | None = None  # the card that has the same


Troubles = Mapping[int, Trouble]  # by the card's index in the fleet


def plan(seed: str, where: Sequence[Place]) -> Troubles:
    """A card has one trouble at most, and the other of two with the same name or addresses has none of its own."""
    chance = random.Random(seed)
    untouched = chance.sample(range(len(where)), len(where))
    found: dict[int, Trouble] = {}
    for kind in _kinds(chance, len(where)):
        for _ in range(max(1, round(_SHARE * len(where)))):
            pair = _next_two(kind, untouched, where) if kind in _OF_TWO else untouched[:1]
            if pair:
                found[pair[0]] = Trouble(kind, *pair[1:])
                untouched = [card for card in untouched if card not in pair]
    return dict(sorted(found.items()))


def _kinds(chance: random.Random, cards: int) -> list[Kind]:
    """Those of two come first, while there are still two of one LAN."""
    some = list(Kind) if cards >= _FOR_ALL_KINDS else chance.sample(list(Kind), cards // 2)
    return sorted(some, key=list(Kind).index)


def _next_two(kind: Kind, untouched: Sequence[int], where: Sequence[Place]) -> list[int]:
    """Nobody else can be reached at an address of another LAN, so two with the same are on one."""
    for number, card in enumerate(untouched):
        for other in untouched[number + 1 :]:
            if kind is not Kind.SAME_ADDRESS or where[card].lan == where[other].lan:
                return [card, other]
    return []


def misplaced_addresses(card: int) -> dict[str, str]:
    """Of the card with this index."""
    networks = zip(CARD_DEVICES, _ELSEWHERE, strict=True)
    return {device: str(IPv4Address(network) + _FIRST_HOST + card) for device, network in networks}


def options_of(
    card: int, troubles: Troubles, name_of: Callable[[int], str], addresses_of: Callable[[int], dict[str, str]]
) -> dict[str, Any]:
    """What makes this trouble of the card, for Lan.card(). A card that is switched off is one that is not started."""
    trouble = troubles.get(card)
    match trouble.kind if trouble else None:
        case Kind.NO_DAEMON:
            return {"autostart": False}
        case Kind.SLOW:
            return {"standstill": STANDSTILL}
        case Kind.MISADDRESSED:
            return {"static": misplaced_addresses(card)}
    if trouble is None or trouble.other is None:
        return {}
    if trouble.kind is Kind.SAME_NAME:
        return {"hostname": name_of(trouble.other)}
    return {"static": addresses_of(trouble.other)}


def description(troubles: Troubles, names: Sequence[str]) -> list[str]:
    """A line for each kind."""
    lines = []
    for kind in Kind:
        cards = [_called(card, trouble, names) for card, trouble in troubles.items() if trouble.kind is kind]
        if cards:
            lines.append(f"{kind.value}: {', '.join(cards)}")
    return lines


def _called(card: int, trouble: Trouble, names: Sequence[str]) -> str:
    return names[card] if trouble.other is None else f"{names[card]} (that of {names[trouble.other]})"
