# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Every command, byte for byte in both directions, over both devices."""

from collections.abc import Callable

import pytest
from support.peers import BROADCAST, TcpPeer, UdpPeer
from tarvelsim import Card
from wire import golden


def masked(reply: bytes) -> bytes:
    """In a reply as long as that with the clock, its text is replaced by a fixed one."""
    if len(reply) != len(golden.TIME_GET.reply):
        return reply
    place = golden.TIME_GET_DATE
    return reply[: place.start] + golden.TIME_GET.reply[place] + reply[place.stop :]


@pytest.mark.parametrize("device", ["eth0", "eth1"])
def test_versions(card: Card, addresses: dict[str, str], device: str) -> None:
    with TcpPeer(addresses[device]) as peer:
        assert peer.ask(golden.VERSIONS.request).encode() == golden.VERSIONS.reply


@pytest.mark.parametrize("device", ["eth0", "eth1"])
def test_time_reference_get(card: Card, addresses: dict[str, str], device: str) -> None:
    with TcpPeer(addresses[device]) as peer:
        assert masked(peer.ask(golden.TIME_GET.request).encode()) == golden.TIME_GET.reply


@pytest.mark.parametrize("device", ["eth0", "eth1"])
@pytest.mark.parametrize("exchange", [golden.UPLOAD, golden.UPGRADE, golden.TIME_SET], ids=str)
def test_tcp_command_that_changes_the_card(
    scratch_card: Card, addresses: dict[str, str], device: str, exchange: golden.Exchange
) -> None:
    with TcpPeer(addresses[device]) as peer:
        assert peer.ask(exchange.request).encode() == exchange.reply


def test_all_tcp_commands_in_turn_on_one_connection(scratch_card: Card, connect: Callable[[], TcpPeer]) -> None:
    peer = connect()
    for exchange in (golden.TIME_GET, golden.VERSIONS, golden.UPLOAD, golden.TIME_SET, golden.UPGRADE):
        assert masked(peer.ask(exchange.request).encode()) == exchange.reply


@pytest.mark.parametrize("to", [None, BROADCAST], ids=["unicast", "broadcast"])
@pytest.mark.parametrize("device", ["udp", "udp1"])
def test_ip_configuration_get(card: Card, request: pytest.FixtureRequest, device: str, to: str | None) -> None:
    peer: UdpPeer = request.getfixturevalue(device)
    assert peer.ask(golden.IP_GET.request, to).message.encode() == golden.IP_GET.reply


@pytest.mark.parametrize("device", ["udp", "udp1"])
@pytest.mark.parametrize("exchange", [golden.IP_SET, golden.REBOOT], ids=str)
def test_udp_command_that_changes_the_card(
    scratch_card: Card, request: pytest.FixtureRequest, device: str, exchange: golden.Exchange
) -> None:
    peer: UdpPeer = request.getfixturevalue(device)
    answer = peer.ask(exchange.request)
    assert answer.message.encode() == exchange.reply
    assert answer.destination == BROADCAST
