# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Datagrams that are meant to cause more of them."""

from collections.abc import Iterator

import pytest
from support.daemon import IS_HARDENED
from support.documents import ip_configuration
from support.peers import UdpPeer
from support.watch import Watch
from tarvelsim import Card, Lan
from wire import Command, request
from wire.numbers import PORT


@pytest.fixture
def other_card(lan: Lan, addresses: dict[str, str]) -> Iterator[UdpPeer]:
    """Somebody who sends from the port of a card."""
    peer = UdpPeer("lan0", lan.address("lan0"), addresses["eth0"], PORT)
    yield peer
    peer.close()


def answers(peer: UdpPeer) -> int:
    """How many have come so far, among all that is broadcast to a card's port."""
    number = 0
    while peer.has_datagram():
        number += peer.receive().header.command >= 0x8000
    return number


@pytest.mark.parametrize(
    "data", [request(1, service=3, status=5), request(0x42), request(Command.IP_GET, ip_configuration())]
)
def test_datagram_from_the_port_of_a_card(card: Card, watch: Watch, other_card: UdpPeer, data: bytes) -> None:
    other_card.send(data)
    assert watch.logged("info Nothing is sent to port 50003, which is a card's") == IS_HARDENED
    assert answers(other_card) == (0 if IS_HARDENED else 1)
