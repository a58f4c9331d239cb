# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The LAN's plan: who has which device, address and hardware address.

Hardware addresses follow from the card's number, so that a card that takes the place of another is reached at once.
"""

from dataclasses import dataclass

CARD_DEVICES = ("eth0", "eth1")
_FIRST_STATIC, _FIRST_LEASE, MOST_CARDS = 10, 100, 80


@dataclass(frozen=True)
class Segment:
    """One of the two networks that every card is connected to."""

    number: int

    @property
    def client_device(self) -> str:
        return f"lan{self.number}"

    @property
    def card_device(self) -> str:
        return CARD_DEVICES[self.number]

    @property
    def client_address(self) -> str:
        return f"10.0.{self.number}.1"

    @property
    def client_mac(self) -> str:
        return f"02:00:00:00:{self.number:02x}:00"

    def static_address(self, card: int) -> str:
        return f"10.0.{self.number}.{_FIRST_STATIC + card}"

    def leased_address(self, card: int) -> str:
        """What a card gets that asks for an address by DHCP."""
        return f"10.0.{self.number}.{_FIRST_LEASE + card}"

    def card_mac(self, card: int) -> str:
        return f"02:00:00:00:{self.number:02x}:{card:02x}"

    def port(self, card: int) -> str:
        """The LAN's end of the card's cable."""
        return f"card{card}e{self.number}"


SEGMENTS = (Segment(0), Segment(1))


def segment_of(device: str) -> Segment:
    """The segment of a device of the card or of the client."""
    for segment in SEGMENTS:
        if device in (segment.card_device, segment.client_device):
            return segment
    raise ValueError(f"no such device: {device}")
