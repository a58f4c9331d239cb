# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which TCP requests are refused before any command sees them, and what follows."""

from collections.abc import Callable
from typing import Any

import pytest
from support.descriptors import wait_until_read
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

REFUSALS = [
    ({"version": 2}, Status.WRONG_VERSION),
    ({"version": 0}, Status.WRONG_VERSION),
    ({"device": 6}, Status.WRONG_DEVICE),
    ({"service": 3}, Status.WRONG_SERVICE),
    ({"device": 6, "version": 2}, Status.WRONG_VERSION),
    ({"device": 6, "service": 3}, Status.WRONG_DEVICE),
    ({"service": 3, "version": 2}, Status.WRONG_VERSION),
    ({"device": 6, "service": 3, "version": 2}, Status.WRONG_VERSION),
]


@pytest.mark.parametrize(("wrong", "status"), REFUSALS, ids=str)
def test_wrong_header_gets_its_status_with_the_cards_own_numbers(
    card: Card, tcp: TcpPeer, wrong: dict[str, Any], status: Status
) -> None:
    reply = tcp.ask(request(Command.VERSIONS, sequence=0xA1B2C3D4, **wrong))
    assert reply.header == Header(command=0x8001, status=status, sequence=0xA1B2C3D4)


@pytest.mark.parametrize("wrong", [{"version": 2}, {"device": 6}, {"service": 3}], ids=str)
def test_refused_header_ends_the_connection(card: Card, tcp: TcpPeer, wrong: dict[str, Any]) -> None:
    tcp.send(request(Command.VERSIONS, **wrong))
    assert len(tcp.rest()) == 20


def test_refused_header_is_not_logged(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.send(request(Command.VERSIONS, device=6))
    tcp.rest()
    assert watch.log_without_numbers() == [
        f"info Connection from 10.0.0.1 accepted on ports 50003/{tcp.port}",
        "info Socket (N) successfully closed",
    ]


def test_payload_of_a_refused_header_is_not_read(card: Card, tcp: TcpPeer) -> None:
    tcp.send(request(Command.TIME_SET, device=6, message_format=1, payload_length=1000))
    assert tcp.receive().header.status == Status.WRONG_DEVICE
    assert tcp.rest() == b""


def test_start_pattern_is_not_looked_at(card: Card, tcp: TcpPeer) -> None:
    assert tcp.ask(request(Command.VERSIONS, start_pattern=0)).header.status == Status.SUCCESS


def test_unknown_command_keeps_the_connection(card: Card, tcp: TcpPeer) -> None:
    assert tcp.ask(request(2, sequence=9)).header == Header(command=0x8002, status=6, sequence=9)
    assert tcp.ask(request(Command.VERSIONS)).header.status == Status.SUCCESS


def test_unknown_command_is_logged_as_a_warning(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(0xABC))
    assert watch.log()[1:] == ["warning Unknown command ID: 0xabc"]


@pytest.mark.parametrize("command", [0, 2, 3, 4, 6, 9, 15, 18, 255, 257, 0x7FFF])
def test_command_that_tcp_does_not_serve_is_unknown(card: Card, tcp: TcpPeer, command: int) -> None:
    assert tcp.ask(request(command)).header == Header(command=command | 0x8000, status=6)


def test_reply_flag_in_a_request_makes_the_command_unknown(card: Card, tcp: TcpPeer) -> None:
    assert tcp.ask(request(0x8001)).header == Header(command=0x8001, status=6)


@pytest.mark.parametrize("size", [1, 4096, 4097, 10000])
def test_payload_of_an_unknown_command_is_drained(card: Card, tcp: TcpPeer, size: int) -> None:
    tcp.send(request(2, payload_length=size) + b"\xff" * size)
    assert tcp.receive().header.status == Status.UNKNOWN_COMMAND
    assert tcp.ask(request(Command.VERSIONS)).header.status == Status.SUCCESS


def test_client_that_closes_inside_an_unknown_payload_gets_no_reply(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.send(request(2, payload_length=10000) + bytes(5000))
    tcp.end_sending()
    assert tcp.rest() == b""
    assert not watch.logged("warning Unknown command ID: 0x2")


def test_client_that_closes_inside_a_header_gets_no_reply(
    card: Card, watch: Watch, connect: Callable[[], TcpPeer]
) -> None:
    peer = connect()
    peer.send(request(Command.VERSIONS)[:8])
    peer.end_sending()
    assert peer.rest() == b""
    assert watch.log_without_numbers()[1:] == [
        "info Client closed the connection",
        "info Socket (N) successfully closed",
    ]
    assert connect().ask(request(Command.VERSIONS)).header.status == Status.SUCCESS


def test_header_may_come_in_pieces(card: Card, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    whole = request(Command.VERSIONS)
    tcp.send(whole[:3])
    assert card.daemon.pid is not None
    wait_until_read(card.daemon.pid, tcp)
    tcp.send(whole[3:])
    assert tcp.receive().header.status == Status.SUCCESS


def test_request_fields_that_only_replies_use_are_ignored(card: Card, tcp: TcpPeer) -> None:
    reply = tcp.ask(request(Command.VERSIONS, status=77, command_version=9, message_format=0xE0))
    assert (reply.header.status, reply.header.command_version) == (Status.SUCCESS, 1)
