# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The plan of the networks: who has which device, address and hardware address.

Hardware addresses follow from the card's number, so that a card that takes the place of another is reached at once.
"""

import json
from collections.abc import Iterator
from dataclasses import asdict, dataclass
from ipaddress import IPv4Address
from pathlib import Path

from .errors import SimError

CARD_DEVICES = ("eth0", "eth1")
_NOTE = "plan.json"
_MOST_LANS = 100


@dataclass(frozen=True)
class _Layout:
    """How the addresses of one network are shared out: so many bits of prefix, and what the cards' numbers are added to."""

    prefix: int
    first_static: int
    first_lease: int
    most_cards: int


_SMALL = _Layout(24, first_static=10, first_lease=100, most_cards=89)
_LARGE = _Layout(22, first_static=10, first_lease=512 + 10, most_cards=500)


@dataclass(frozen=True)
class Segment:
    """One of the two networks that every card of a LAN is connected to."""

    number: int
    lan: int = 0
    is_large: bool = False

    @property
    def _layout(self) -> _Layout:
        return _LARGE if self.is_large else _SMALL

    @property
    def _index(self) -> int:
        """Among the networks of all LANs."""
        return len(CARD_DEVICES) * self.lan + self.number

    def _address(self, host: int) -> str:
        network = f"10.{1 + self.lan}.{4 * self.number}.0" if self.is_large else f"10.0.{self.number}.0"
        return str(IPv4Address(network) + host)

    @property
    def prefix(self) -> int:
        return self._layout.prefix

    @property
    def client_device(self) -> str:
        return f"lan{self._index}"

    @property
    def card_device(self) -> str:
        return CARD_DEVICES[self.number]

    @property
    def client_address(self) -> str:
        return self._address(1)

    @property
    def client_mac(self) -> str:
        return f"02:00:00:00:{self._index:02x}:00"

    def static_address(self, card: int) -> str:
        return self._address(self._layout.first_static + card)

    def leased_address(self, card: int) -> str:
        """What a card gets that asks for an address by DHCP."""
        return self._address(self._layout.first_lease + card)

    def card_mac(self, card: int) -> str:
        return f"02:00:00:{card >> 8:02x}:{self._index:02x}:{card & 255:02x}"

    def port(self, card: int) -> str:
        """The LAN's end of the card's cable."""
        return f"card{card}e{self._index}"


@dataclass(frozen=True)
class Plan:
    """So many LANs, each of two networks. A single small one has room for 89 cards; large ones have room for 500 each."""

    lans: int = 1
    is_large: bool = False

    @staticmethod
    def for_fleet(cards: int, lans: int) -> "Plan":
        plan = Plan(lans, is_large=lans > 1 or cards > _SMALL.most_cards)
        if not 1 <= lans <= _MOST_LANS:
            raise SimError(f"there can be 1 to {_MOST_LANS} LANs")
        if not 1 <= cards <= lans * plan.most_cards:
            raise SimError(f"there can be 1 to {lans * plan.most_cards} cards on so many LANs")
        return plan

    @property
    def most_cards(self) -> int:
        """On each LAN."""
        return (_LARGE if self.is_large else _SMALL).most_cards

    def segments(self, lan: int = 0) -> tuple[Segment, ...]:
        return tuple(Segment(number, lan, self.is_large) for number in range(len(CARD_DEVICES)))

    def all_segments(self) -> Iterator[Segment]:
        for lan in range(self.lans):
            yield from self.segments(lan)

    def segment_of_client(self, device: str) -> Segment:
        for segment in self.all_segments():
            if segment.client_device == device:
                return segment
        raise ValueError(f"no such device: {device}")

    def save(self, run_dir: Path) -> None:
        (run_dir / _NOTE).write_text(json.dumps(asdict(self)) + "\n", encoding="ascii")

    @staticmethod
    def load(run_dir: Path) -> "Plan":
        note = run_dir / _NOTE
        return Plan(**json.loads(note.read_text(encoding="ascii"))) if note.exists() else Plan()


@dataclass(frozen=True)
class Place:
    """A card's: on one of the LANs, with a number there."""

    lan: int
    number: int


def places(cards: int, lans: int) -> list[Place]:
    """Where so many cards are that fill one LAN after the other."""
    on_each = -(-cards // lans)
    return [Place(index // on_each, index % on_each + 1) for index in range(cards)]
