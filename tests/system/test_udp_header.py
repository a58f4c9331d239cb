# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which datagrams are refused or dropped before any command sees them."""

from typing import Any

import pytest
from support.peers import BROADCAST, TcpPeer, UdpPeer
from support.stopping import stopped
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

SERVICE_WARNING = "warning Wrong service field in header: 3 instead of 4"
VERSION_WARNING = "warning Wrong version field in header: 2 instead of 1"

REFUSALS = [
    ({"service": 3}, Status.WRONG_SERVICE, [SERVICE_WARNING]),
    ({"version": 2}, Status.WRONG_VERSION, [VERSION_WARNING]),
    ({"service": 3, "version": 2}, Status.WRONG_VERSION, [SERVICE_WARNING, VERSION_WARNING]),
    ({"service": 3, "device": 7}, Status.WRONG_SERVICE, [SERVICE_WARNING]),
    ({"version": 2, "device": 7}, Status.WRONG_VERSION, [VERSION_WARNING]),
    ({"service": 3, "command": 0x8003}, Status.WRONG_SERVICE, [SERVICE_WARNING]),
]

FOR_OTHER = "info Got datagram for device 7, drop it"
A_RESPONSE = "info Got a response from another card, drop it"

DROPS = [
    ({"device": 7}, [FOR_OTHER]),
    ({"command": 0x8003}, [A_RESPONSE]),
    ({"command": 0x8042}, [A_RESPONSE]),
    ({"device": 7, "command": 0x8003}, [FOR_OTHER, A_RESPONSE]),
]


@pytest.fixture(params=["udp", "udp1"], ids=["eth0", "eth1"])
def peer(card: Card, request: pytest.FixtureRequest) -> UdpPeer:
    peer: UdpPeer = request.getfixturevalue(request.param)
    return peer


@pytest.mark.parametrize(("wrong", "status", "warnings"), REFUSALS, ids=str)
def test_wrong_header_is_logged_and_refused_to_its_sender(
    peer: UdpPeer, watch: Watch, wrong: dict[str, Any], status: Status, warnings: list[str]
) -> None:
    fields: dict[str, Any] = {"command": 3, "sequence": 0xA1B2C3D4, **wrong}
    answer = peer.ask(request(**fields))
    assert answer.header == Header(command=0x8003, status=status, sequence=0xA1B2C3D4)
    assert answer.destination == peer.own_address
    assert watch.log() == [peer.logged(20), *warnings]


@pytest.mark.parametrize(("other", "reasons"), DROPS, ids=str)
def test_datagram_that_is_not_for_this_card_is_dropped(
    peer: UdpPeer, watch: Watch, other: dict[str, Any], reasons: list[str]
) -> None:
    fields: dict[str, Any] = {"command": 3, **other}
    assert peer.is_ignored(request(**fields))
    assert watch.log()[: 1 + len(reasons)] == [peer.logged(20), *reasons]


@pytest.mark.parametrize("command", [0x0042, 0, 1, 7, 8, 16, 17, 0x7FFF])
def test_unknown_command_is_answered_to_its_sender(peer: UdpPeer, watch: Watch, command: int) -> None:
    answer = peer.ask(request(command, sequence=5))
    assert answer.header == Header(command=command | 0x8000, status=6, sequence=5)
    assert answer.message.payload == b""
    assert answer.destination == peer.own_address
    assert watch.log() == [peer.logged(20), f"warning Unknown command ID: 0x{command:x}"]


def test_refusal_of_a_broadcast_request_is_not_broadcast(peer: UdpPeer) -> None:
    answer = peer.ask(request(0x42), to=BROADCAST)
    assert answer.destination == peer.own_address


def test_refusal_of_a_request_with_payload_has_none(peer: UdpPeer, watch: Watch) -> None:
    answer = peer.ask(request(0x42, "text"))
    assert (answer.header.message_format, answer.header.payload_length, answer.message.payload) == (0, 0, b"")
    assert watch.log()[0] == peer.logged(29)


def test_start_pattern_is_not_looked_at(peer: UdpPeer) -> None:
    assert peer.ask(request(0x42, start_pattern=0)).header.status == Status.UNKNOWN_COMMAND


def test_datagram_for_every_card_comes_in_by_its_own_device_only(card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(request(0x42), to=BROADCAST)
    assert watch.log() == [udp.logged(20), "warning Unknown command ID: 0x42"]


def test_eth0_is_served_before_eth1(card: Card, udp: UdpPeer, udp1: UdpPeer, watch: Watch) -> None:
    with stopped(card):
        udp1.send(request(0x43))
        udp.send(request(0x42))
    udp1.receive()
    assert [line for line in watch.log() if "Unknown" in line] == [
        "warning Unknown command ID: 0x42",
        "warning Unknown command ID: 0x43",
    ]


def test_connection_is_served_before_datagrams(card: Card, udp: UdpPeer, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(Command.VERSIONS))
    with stopped(card):
        udp.send(request(0x42))
        tcp.send(request(0x43))
    udp.receive()
    tcp.receive()
    assert [line for line in watch.log() if "Unknown" in line] == [
        "warning Unknown command ID: 0x43",
        "warning Unknown command ID: 0x42",
    ]
