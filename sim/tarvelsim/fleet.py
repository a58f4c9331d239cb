# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Many cards at once."""

import os
import resource
from collections.abc import Iterator, Sequence
from concurrent.futures import ThreadPoolExecutor
from typing import Any

from . import switches
from .card import Card
from .lan import Lan
from .plan import places
from .troubles import Kind, Troubles, options_of

_PATIENCE = 120.0  # seconds for one card among many
_AT_ONCE = 4  # for each core: a card that starts waits for much


def cards(lan: Lan, names: Sequence[str], troubles: Troubles | None = None, **options: Any) -> list[Card]:
    """New ones with these names, which fill one LAN after the other; they do not run yet."""
    where = places(len(names), lan.plan.lans)
    if lan.plan.is_large:
        switches.introduce(where, lan.plan)

    def addresses_of(card: int) -> dict[str, str]:
        return {each.card_device: each.static_address(where[card].number) for each in lan.plan.segments(where[card].lan)}

    own = [options_of(card, troubles or {}, lambda other: names[other], addresses_of) for card in range(len(names))]
    return [lan.card(name, place=where[card], **options, **own[card]) for card, name in enumerate(names)]


def switched_on(new_cards: Sequence[Card], troubles: Troubles) -> list[Card]:
    off = [card for card, trouble in troubles.items() if trouble.kind is Kind.OFF]
    return [card for number, card in enumerate(new_cards) if number not in off]


def start(new_cards: Sequence[Card]) -> Iterator[Card]:
    """Starts several at a time and gives them in their order, each as soon as it serves."""
    _allow_many_descriptors()
    with ThreadPoolExecutor(_AT_ONCE * (os.cpu_count() or 1)) as starters:
        try:
            yield from starters.map(_started, new_cards)
        except BaseException:
            starters.shutdown(cancel_futures=True)
            raise


def _started(card: Card) -> Card:
    card.start(timeout=_PATIENCE)
    return card


def _allow_many_descriptors() -> None:
    """Each card is watched through one, and has a few more while it starts."""
    _, most = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
