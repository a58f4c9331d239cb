# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Clients that keep the card busy, and others out, without asking for anything."""

import socket
from collections.abc import Callable

import pytest
from support.daemon import IS_HARDENED
from support.descriptors import wait_until_read
from support.peers import TcpPeer, UdpPeer
from support.tracing import Tracer
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Header, request

EXCEPTION = "Exception pending on Tarvel TCP peer socket"
STALLED = "Client has sent nothing for 30 s in the middle of a message, close the connection"

A_PART = Header(command=0x43, payload_length=100).encode() + bytes(10)
# The first is made by the start; the header takes one, and what there is of the payload.
RECEIVE_BEHIND_THE_PART = "recvfrom:error=EAGAIN:when=4"


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
def test_client_that_stalls_in_the_middle_of_a_message(
    tracer: Tracer, scratch_card: Card, watch: Watch, connect: Callable[[], TcpPeer], udp: UdpPeer
) -> None:
    if IS_HARDENED:
        tracer.inject(RECEIVE_BEHIND_THE_PART)
    tcp, mark = connect(), scratch_card.records.log_mark()
    tcp.send(A_PART)
    if IS_HARDENED:
        assert tcp.rest() == b""
        scratch_card.records.wait_log(STALLED, since=mark, level="warning")
        assert udp.ask(request(0x42)).header.command == 0x8042
        return
    assert scratch_card.daemon.pid is not None
    wait_until_read(scratch_card.daemon.pid, tcp)
    udp.send(request(0x42))
    tcp.send(bytes(90))
    order = ["warning Unknown command ID: 0x43", udp.logged(20), "warning Unknown command ID: 0x42"]
    assert watch.log()[-3:] == order


@pytest.mark.long
@pytest.mark.skipif(not IS_HARDENED, reason="as designed the card waits for ever")
def test_client_that_stalls_for_half_a_minute(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.socket.settimeout(120)
    tcp.send(A_PART)
    assert tcp.rest() == b""
    assert watch.logged(f"warning {STALLED}")
