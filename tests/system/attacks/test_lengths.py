# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Messages that lie about how long they are."""

import struct
from collections.abc import Callable
from pathlib import Path

import pytest
from support.descriptors import wait_until_read
from support.documents import ip_configuration, time_reference
from support.peers import BROADCAST, PATIENCE, TcpPeer, UdpPeer
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Header, Status, request

ARCHIVE = "/tmp/upgrade/firmware.tar.gz"
MOST = 0xFFFFFFFF
MIB = 1 << 20


def private_memory(card: Card) -> int:
    """In bytes."""
    status = Path(f"/proc/{card.daemon.pid}/status").read_text(encoding="ascii").splitlines()
    return next(int(line.split()[1]) << 10 for line in status if line.startswith("RssAnon:"))


@pytest.mark.parametrize("message_format", [0x01, 0x02, 0x04, 0x08, 0x0F, 0x1F])
@pytest.mark.parametrize("payload", [b"\xff" * 4, b"\xf0\x0f\0\0", b"\xff\xff\xff\x7f" + bytes(64), bytes(3)])
def test_sections_of_a_datagram_that_lie_about_their_size(
    card: Card, udp: UdpPeer, message_format: int, payload: bytes
) -> None:
    header = Header(command=Command.IP_GET, message_format=message_format, payload_length=len(payload))
    assert udp.ask(header.encode() + payload).header.status == Status.FAILURE


@pytest.mark.parametrize("size", [20, 24, 60])
def test_datagram_that_ends_where_an_earlier_one_goes_on(card: Card, udp: UdpPeer, size: int) -> None:
    whole = request(Command.IP_GET, ip_configuration())
    assert udp.ask(whole).header.status == Status.SUCCESS
    answer = udp.ask(whole[:size])
    assert (answer.header.status, answer.destination) == (Status.FAILURE, BROADCAST)


@pytest.mark.parametrize("size", [0, 60])
def test_message_that_ends_where_an_earlier_one_goes_on(scratch_card: Card, tcp: TcpPeer, size: int) -> None:
    """Its section says that it is as long as the other one."""
    whole = request(Command.TIME_SET, time_reference(server="10.9.9.9"))
    assert tcp.ask(whole).header.status == Status.SUCCESS
    scratch_card.inside.uci("set", "system.ntp.server=10.1.1.1")
    cut = whole[20 : 24 + size]
    header = Header(command=Command.TIME_SET, message_format=1, payload_length=len(cut))
    assert tcp.ask(header.encode() + cut).header.status == Status.FAILURE
    assert scratch_card.inside.uci("get", "system.ntp.server") == "10.1.1.1"


@pytest.mark.parametrize("size", [0, 1, 19])
def test_datagram_of_less_than_a_header(card: Card, udp: UdpPeer, size: int) -> None:
    assert udp.is_ignored(request(Command.IP_GET, ip_configuration())[:size])


def test_datagram_of_more_than_the_card_has_room_for(card: Card, udp: UdpPeer) -> None:
    """What fits is read, and nothing is written behind it."""
    large = request(Command.IP_GET, ip_configuration() + " " * 60_000)
    assert udp.ask(large).header.status == Status.SUCCESS


def test_message_that_is_announced_with_four_gigabytes(card: Card, connect: Callable[[], TcpPeer]) -> None:
    """It is read away as it comes; no memory is taken for it."""
    assert card.daemon.pid is not None
    tcp = connect()
    tcp.ask(request(0x42))
    before = private_memory(card)
    tcp.send(request(0x42, payload_length=MOST) + bytes(32 * MIB))
    wait_until_read(card.daemon.pid, tcp)
    assert private_memory(card) - before < 8 * MIB
    tcp.close()
    assert connect().ask(request(Command.VERSIONS)).header.status == Status.SUCCESS


@pytest.mark.parametrize(("length", "count"), [(MOST, MOST - 4), (3, MOST)], ids=["true", "sum that wraps"])
def test_archive_that_is_announced_with_four_gigabytes(
    scratch_card: Card, connect: Callable[[], TcpPeer], length: int, count: int
) -> None:
    """The card stores what comes, until its room ends or the client does."""
    stored = scratch_card.inside.path(ARCHIVE)
    tcp = connect()
    tcp.send(request(Command.UPLOAD, message_format=1, payload_length=length) + struct.pack("<I", count) + bytes(MIB))
    wait_for(
        lambda: stored.exists() and stored.stat().st_size > MIB - 8192, PATIENCE, lambda: "the archive is not stored"
    )
    tcp.close()
    assert connect().ask(request(Command.VERSIONS)).header.status == Status.SUCCESS


def test_request_in_what_a_refused_one_leaves_unread(card: Card, tcp: TcpPeer) -> None:
    hidden = request(0x77)
    tcp.send(request(Command.TIME_SET, message_format=1, payload_length=2000) + hidden)
    assert tcp.receive().header.status == Status.FAILURE
    assert tcp.receive().header.command == 0x8077
