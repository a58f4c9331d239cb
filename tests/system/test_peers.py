# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The clients of these tests themselves."""

from collections.abc import Iterator
from pathlib import Path

import pytest
import tarvelsim
from support.peers import UdpPeer
from wire.numbers import PORT

_RANGE = Path("/proc/sys/net/ipv4/ip_local_port_range")


@pytest.fixture
def few_ports(lan: tarvelsim.Lan) -> Iterator[None]:
    """The LAN's kernel has two ports to choose from, and one is the cards'."""
    usual = _RANGE.read_text()
    _RANGE.write_text(f"{PORT} {PORT + 1}")
    yield
    _RANGE.write_text(usual)


@pytest.mark.usefixtures("few_ports")
def test_client_never_has_the_cards_port_by_chance(lan: tarvelsim.Lan, addresses: dict[str, str]) -> None:
    """A hardened card takes such a client for another card, and does not answer."""
    for _ in range(16):
        peer = UdpPeer("lan0", lan.address("lan0"), addresses["eth0"])
        peer.close()
        assert peer.port != PORT
