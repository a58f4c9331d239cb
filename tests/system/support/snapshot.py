# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a change could have touched, of cards that must be as they were."""

from collections.abc import Sequence
from dataclasses import dataclass

from tarvelsim import Card


@dataclass(frozen=True)
class _State:
    settings: str
    addresses: tuple[str, ...]
    versions: tuple[tuple[str, str], ...]
    upgrade: tuple[str, ...]
    boots: int


def _state_of(card: Card) -> _State:
    versions = tuple((name, card.inside.read(f"/etc/pnr/{name}")) for name in card.inside.listdir("/etc/pnr"))
    addresses = tuple(address for device in ("eth0", "eth1") for address in card.addresses(device))
    upgrade = tuple(card.inside.listdir("/tmp/upgrade"))
    return _State(card.inside.uci("show"), addresses, versions, upgrade, card.boots)


class Snapshot:
    """Settings, staged ones too, versions, unpacked firmware and boots of all cards."""

    def __init__(self, cards: Sequence[Card]) -> None:
        self._states = {card.name: _state_of(card) for card in cards}

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Snapshot) and self._states == other._states

    def __repr__(self) -> str:
        return repr(self._states)
