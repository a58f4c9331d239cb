# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Every command, byte for byte in both directions, over both devices. That each has its exchange is seen in the tables of
commands, which tests/unit holds against the page of the exchanges."""

from collections.abc import Callable

import pytest
from support.peers import BROADCAST, TcpPeer, UdpPeer
from tarvelsim import Card
from wire import Header, golden, masked


@pytest.mark.parametrize("device", ["eth0", "eth1"])
def test_versions(card: Card, addresses: dict[str, str], device: str) -> None:
    with TcpPeer(addresses[device]) as peer:
        assert peer.ask(golden.VERSIONS.request).encode() == golden.VERSIONS.reply


@pytest.mark.parametrize("device", ["eth0", "eth1"])
def test_time_reference_get(card: Card, addresses: dict[str, str], device: str) -> None:
    with TcpPeer(addresses[device]) as peer:
        assert masked(peer.ask(golden.TIME_GET.request).encode()) == masked(golden.TIME_GET.reply)


@pytest.mark.parametrize("device", ["eth0", "eth1"])
@pytest.mark.parametrize("exchange", [golden.UPLOAD, golden.UPGRADE, golden.TIME_SET], ids=str)
def test_tcp_command_that_changes_the_card(
    scratch_card: Card, addresses: dict[str, str], device: str, exchange: golden.Exchange
) -> None:
    with TcpPeer(addresses[device]) as peer:
        assert peer.ask(exchange.request).encode() == exchange.reply


def test_all_tcp_commands_in_turn_on_one_connection(scratch_card: Card, connect: Callable[[], TcpPeer]) -> None:
    peer = connect()
    # Those that only read come first: an upgrade changes what they tell.
    for exchange in sorted(golden.TCP, key=lambda one: Header.decode(one.request).command not in golden.READING):
        assert masked(peer.ask(exchange.request).encode()) == masked(exchange.reply)


@pytest.mark.parametrize("to", [None, BROADCAST], ids=["unicast", "broadcast"])
@pytest.mark.parametrize("device", ["udp", "udp1"])
def test_ip_configuration_get(card: Card, request: pytest.FixtureRequest, device: str, to: str | None) -> None:
    peer: UdpPeer = request.getfixturevalue(device)
    assert peer.ask(golden.IP_GET.request, to).message.encode() == golden.IP_GET.reply


@pytest.mark.parametrize("device", ["udp", "udp1"])
@pytest.mark.parametrize("exchange", golden.UDP, ids=str)
def test_each_udp_command(
    scratch_card: Card, request: pytest.FixtureRequest, device: str, exchange: golden.Exchange
) -> None:
    peer: UdpPeer = request.getfixturevalue(device)
    answer = peer.ask(exchange.request)
    assert answer.message.encode() == exchange.reply
    assert answer.destination == BROADCAST
