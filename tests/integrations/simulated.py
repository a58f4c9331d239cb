# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Cards of a test's own."""

from collections.abc import Iterator, Mapping
from contextlib import contextmanager

import tarvelsim
from support.daemon import COMMAND


@contextmanager
def running(hostnames: Mapping[str, str]) -> Iterator[dict[str, tarvelsim.Card]]:
    """Each by the first name, and called by the second."""
    lan = tarvelsim.Lan.current()
    # A reboot takes so long that it is seen on a busy machine, too.
    cards = {name: lan.card(name, command=COMMAND, hostname=host, reboot_time=5) for name, host in hostnames.items()}
    try:
        for card in cards.values():
            card.start()
        yield cards
    finally:
        for card in cards.values():
            card.stop()


@contextmanager
def numbered(count: int) -> Iterator[list[tarvelsim.Card]]:
    """Called card1, card2, and so on."""
    names = [f"card{number}" for number in range(1, count + 1)]
    with running(dict(zip(names, names, strict=True))) as cards:
        yield list(cards.values())
