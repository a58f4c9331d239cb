# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Clients that keep the card busy, and others out, without asking for anything."""

import contextlib
import socket
import struct
from collections.abc import Callable

import pytest
from support.daemon import IS_HARDENED, words
from support.descriptors import connection_of, shorten_limit, wait_until_read, wait_until_stuck
from support.peers import TcpPeer, UdpPeer
from support.tracing import Tracer
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Header, request

EXCEPTION = "Exception pending on Tarvel TCP peer socket"
STALLED = "Client has sent nothing for 30 s in the middle of a message, close the connection"

A_PART_OF_A_HEADER = request(0x43)[:12]
A_PART = Header(command=0x43, payload_length=100).encode() + bytes(10)
# The first is made by the start; the header takes one, and what there is of the payload.
RECEIVE_BEHIND_THE_PART = {A_PART_OF_A_HEADER: "recvfrom:error=EAGAIN:when=3", A_PART: "recvfrom:error=EAGAIN:when=4"}
BYTES_NOW_AND_THEN = 10


def lines_with(card: Card, text: str, mark: int) -> int:
    return sum(text in line.text for line in card.records.log_lines(mark))


def test_one_urgent_byte(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    mark = scratch_card.records.log_mark()
    tcp.socket.send(b"!", socket.MSG_OOB)
    if IS_HARDENED:
        scratch_card.records.wait_log(EXCEPTION, since=mark)
        watch.log()
        assert lines_with(scratch_card, EXCEPTION, mark) == 1
    else:
        wait_for(lambda: lines_with(scratch_card, EXCEPTION, mark) > 500, 10, lambda: "the log is quiet")
    tcp.ask(request(3))
    watch.log()
    after = scratch_card.records.log_mark()
    tcp.ask(request(4))
    watch.log()
    assert lines_with(scratch_card, EXCEPTION, after) == 0


@pytest.mark.needs_native
@pytest.mark.parametrize(("part", "rest"), [(A_PART_OF_A_HEADER, request(0x43)[12:]), (A_PART, bytes(90))])
def test_client_that_stalls_in_the_middle_of_a_message(
    tracer: Tracer,
    scratch_card: Card,
    watch: Watch,
    connect: Callable[[], TcpPeer],
    udp: UdpPeer,
    part: bytes,
    rest: bytes,
) -> None:
    if IS_HARDENED:
        tracer.inject(RECEIVE_BEHIND_THE_PART[part])
    tcp, mark = connect(), scratch_card.records.log_mark()
    tcp.send(part)
    if IS_HARDENED:
        assert tcp.rest() == b""
        scratch_card.records.wait_log(STALLED, since=mark, level="warning")
        assert udp.ask(request(0x42)).header.command == 0x8042
        return
    assert scratch_card.daemon.pid is not None
    wait_until_read(scratch_card.daemon.pid, tcp)
    udp.send(request(0x42))
    tcp.send(rest)
    order = ["warning Unknown command ID: 0x43", udp.logged(20), "warning Unknown command ID: 0x42"]
    assert watch.log()[-3:] == order


@pytest.mark.needs_native
def test_client_that_sends_a_byte_now_and_then(
    tracer: Tracer, scratch_card: Card, watch: Watch, connect: Callable[[], TcpPeer], udp: UdpPeer
) -> None:
    """Each byte is waited for in a call of its own, which has the whole limit, if there is one."""
    tracer.start("-e", "trace=recvfrom")
    watch.log()
    tcp = connect()
    tcp.send(A_PART)
    assert scratch_card.daemon.pid is not None
    wait_until_read(scratch_card.daemon.pid, tcp)
    udp.send(request(0x42))
    for _ in range(BYTES_NOW_AND_THEN):
        tcp.send(b"x")
        wait_until_read(scratch_card.daemon.pid, tcp)
    with connection_of(scratch_card.daemon.pid) as connection:
        limit = struct.unpack("ll", connection.getsockopt(socket.SOL_SOCKET, socket.SO_RCVTIMEO, 16))
    assert limit == ((30, 0) if IS_HARDENED else (0, 0))
    tcp.send(bytes(90 - BYTES_NOW_AND_THEN))
    order = ["warning Unknown command ID: 0x43", udp.logged(20), "warning Unknown command ID: 0x42"]
    assert watch.log()[-3:] == order
    assert sum(line.endswith("= 1") for line in tracer.lines()) == BYTES_NOW_AND_THEN


@pytest.mark.needs_native
@pytest.mark.skipif(not IS_HARDENED, reason="as designed the card waits for ever")
def test_client_that_stalls_behind_a_byte_now_and_then(
    tracer: Tracer, scratch_card: Card, connect: Callable[[], TcpPeer], udp: UdpPeer
) -> None:
    """It is given up when the last of the calls has found nothing, and not before."""
    tracer.inject(f"recvfrom:error=EAGAIN:when={4 + BYTES_NOW_AND_THEN}")
    tcp, mark = connect(), scratch_card.records.log_mark()
    tcp.send(A_PART)
    assert scratch_card.daemon.pid is not None
    wait_until_read(scratch_card.daemon.pid, tcp)
    for _ in range(BYTES_NOW_AND_THEN - 1):
        tcp.send(b"x")
        wait_until_read(scratch_card.daemon.pid, tcp)
    assert lines_with(scratch_card, STALLED, mark) == 0
    tcp.send(b"x")
    assert tcp.rest() == b""
    scratch_card.records.wait_log(STALLED, since=mark, level="warning")
    assert lines_with(scratch_card, STALLED, mark) == 1
    assert udp.ask(request(0x42)).header.command == 0x8042


def test_client_that_says_nothing_between_messages(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, connect: Callable[[], TcpPeer], udp: UdpPeer
) -> None:
    """The second connection is the kernel's, which takes what is sent there; the card serves it when the first is over."""
    tcp.ask(request(0x43))
    watch.log()  # that the first was accepted, too
    mark = scratch_card.records.log_mark()
    waiting = connect()
    waiting.send(request(0x44))
    assert udp.ask(request(0x42)).header.command == 0x8042  # the kernel has long told the card of the connection
    watch.log()
    assert lines_with(scratch_card, "accepted", mark) == 0
    tcp.ask(request(0x43))
    tcp.close()
    assert waiting.receive().header.command == 0x8044


def test_client_that_never_reads_its_replies(scratch_card: Card, watch: Watch, tcp: TcpPeer, udp: UdpPeer) -> None:
    tcp.ask(request(2))
    assert scratch_card.daemon.pid is not None
    mark = scratch_card.records.log_mark()
    tcp.socket.setblocking(False)
    with contextlib.suppress(BlockingIOError):
        while True:
            tcp.socket.send(request(Command.VERSIONS) * 100)
    wait_until_stuck(scratch_card.daemon.pid)
    udp.send(request(0x42))
    shorten_limit(scratch_card.daemon.pid)
    given_up = f"send() failed: {words('Connection timed out')}"
    scratch_card.records.wait_log(given_up, since=mark, level="warning")
    tcp.reset()
    assert udp.receive().header.command == 0x8042
    log = watch.log()
    assert log.index(f"warning {given_up}") < log.index(udp.logged(20))


@pytest.mark.long
@pytest.mark.skipif(not IS_HARDENED, reason="as designed the card waits for ever")
def test_client_that_stalls_for_half_a_minute(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.socket.settimeout(120)
    tcp.send(A_PART)
    assert tcp.rest() == b""
    assert watch.logged(f"warning {STALLED}")
