# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Connections: one at a time, kept, watched, and never slower than they must be."""

import re
import socket
from collections.abc import Callable

import pytest
from support.descriptors import TCP_USER_TIMEOUT, connection_of, wait_until_read
from support.peers import TcpPeer, UdpPeer
from support.tracing import Tracer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

# sendto(4, ""..., 20, MSG_MORE, NULL, 0) = 20
SEND = re.compile(r", (\d+, \w+), NULL, 0\)")


def test_second_client_waits_until_the_first_closes(
    card: Card, watch: Watch, connect: Callable[[], TcpPeer]
) -> None:
    first = connect()
    first.ask(request(3))
    second = connect()
    second.send(request(2))
    assert first.ask(request(Command.VERSIONS)).header.status == Status.SUCCESS
    assert not second.has_answer()
    assert watch.log() == [
        f"info Connection from 10.0.0.1 accepted on ports 50003/{first.port}",
        "warning Unknown command ID: 0x3",
    ]

    first.close()
    assert second.receive().header.status == Status.UNKNOWN_COMMAND
    assert watch.log_without_numbers()[2:] == [
        "info Client closed the connection",
        "info Socket (N) successfully closed",
        f"info Connection from 10.0.0.1 accepted on ports 50003/{second.port}",
        "warning Unknown command ID: 0x2",
    ]


def test_datagrams_are_served_while_a_connection_is_open(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    assert watch.log()  # the watch asks by datagram
    assert tcp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND


def test_closed_connection_is_logged(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.close()
    assert watch.log_without_numbers() == [
        f"info Connection from 10.0.0.1 accepted on ports 50003/{tcp.port}",
        "info Client closed the connection",
        "info Socket (N) successfully closed",
    ]


def test_connection_that_is_reset_is_logged_with_its_error(
    card: Card, watch: Watch, connect: Callable[[], TcpPeer]
) -> None:
    peer = connect()
    peer.ask(request(2))
    peer.reset()
    connect().ask(request(3))
    assert watch.log_without_numbers()[2:4] == [
        "warning recv() failed: Connection reset by peer",
        "info Socket (N) successfully closed",
    ]


def test_reply_to_a_client_that_is_gone_does_not_end_the_daemon(
    scratch_card: Card, watch: Watch, connect: Callable[[], TcpPeer]
) -> None:
    peer = connect()
    scratch_card.inside.hold("sh")
    peer.send(request(Command.TIME_GET))
    scratch_card.records.wait_command("uci -q get system.ntp.server", since=watch.commands_mark)
    peer.end_sending()
    peer.reset()
    scratch_card.inside.release()
    assert connect().ask(request(Command.VERSIONS)).header.status == Status.SUCCESS
    assert "info Client closed the connection" in watch.log()


def test_client_that_stalls_holds_everything_up(card: Card, watch: Watch, tcp: TcpPeer, udp: UdpPeer) -> None:
    tcp.ask(request(2))
    tcp.send(request(0x43)[:10])
    assert card.daemon.pid is not None
    wait_until_read(card.daemon.pid, tcp)
    udp.send(request(0x42))
    tcp.send(request(0x43)[10:])
    tcp.receive()
    udp.receive()
    assert watch.log()[-3:] == [
        "warning Unknown command ID: 0x43",
        udp.logged(20),
        "warning Unknown command ID: 0x42",
    ]


def test_requests_sent_at_once_are_answered_in_order(card: Card, tcp: TcpPeer) -> None:
    tcp.send(b"".join(request(2, sequence=number) for number in range(20)))
    assert [tcp.receive().header.sequence for _ in range(20)] == list(range(20))


@pytest.mark.parametrize("command", [Command.VERSIONS, Command.TIME_GET], ids=["versions", "time"])
def test_payload_of_a_get_command_is_taken_as_the_next_message(card: Card, tcp: TcpPeer, command: Command) -> None:
    tcp.send(request(command, payload_length=20) + request(0x55, sequence=3))
    assert tcp.receive().header.status == Status.SUCCESS
    assert tcp.receive().header == Header(command=0x8055, status=6, sequence=3)


def test_vanished_client_is_found_out(card: Card, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    assert card.daemon.pid is not None
    with connection_of(card.daemon.pid) as copy:
        assert copy.getsockopt(socket.SOL_SOCKET, socket.SO_KEEPALIVE) == 1
        options = (socket.TCP_KEEPIDLE, socket.TCP_KEEPINTVL, socket.TCP_KEEPCNT, TCP_USER_TIMEOUT)
        assert [copy.getsockopt(socket.IPPROTO_TCP, option) for option in options] == [60, 10, 3, 90_000]


def sends(tracer: Tracer) -> list[str]:
    """Length and flags of each send on a connection; the log's carry a flag of their own."""
    found = [SEND.search(line) for line in tracer.lines() if "MSG_NOSIGNAL" not in line]
    return [match[1] for match in found if match]


@pytest.mark.needs_native
def test_no_piece_of_a_reply_waits_for_an_acknowledgement(tracer: Tracer, connect: Callable[[], TcpPeer]) -> None:
    tracer.start("-e", "trace=sendto", "-s", "0")
    peer = connect()
    peer.ask(request(2))
    size = peer.ask(request(Command.TIME_GET)).header.payload_length - 4
    peer.close()
    assert sends(tracer) == ["20, 0", "20, MSG_MORE", "4, MSG_MORE", f"{size}, 0"]
