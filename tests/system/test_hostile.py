# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Bytes from nowhere: the daemon takes them, stays alive and answers afterwards."""

import random
from collections.abc import Callable, Iterator

import pytest
from support.documents import ip_configuration, reboot_card, time_reference
from support.peers import TcpPeer, UdpPeer
from tarvelsim import Card
from wire import Command, Header, Status, golden, request

VALID_TEXTS = [
    ip_configuration(to="nobody"),
    reboot_card(to="nobody"),
    "<IpConfiguration From='a' To='" + "&amp;" * 500,
    "<!DOCTYPE a [<!ENTITY b 'c'><!ENTITY d '&b;&b;&b;'>]><IpConfiguration From='&d;' To='nobody'/>",
    '<IpConfiguration xmlns:x="y" x:From="a" From="b" To="nobody"><' + "a" * 2000,
]


def mutated(source: random.Random, data: bytes) -> bytes:
    """A few bytes changed, and now and then the end cut off or something added. The name stays that of nobody."""
    changed = bytearray(data)
    for _ in range(source.randint(1, 8)):
        changed[source.randrange(len(changed))] = source.randrange(256)
    size = source.choice([len(changed), len(changed), source.randrange(len(changed)), len(changed)])
    return bytes(changed[:size]) + source.randbytes(source.choice([0, 0, 50]))


def random_datagrams(source: random.Random) -> Iterator[bytes]:
    for _ in range(100):
        yield source.randbytes(source.choice([0, 1, 19, 20, 21, 24, 100, 4096, 5000]))
    for _ in range(200):
        header = Header(
            command=source.choice([3, 4, 9]),
            message_format=source.choice([1, 1, 3, 8, 15, 0x81, source.randrange(256)]),
            payload_length=source.choice([0, 4, 100, source.randrange(1 << 32)]),
        )
        yield header.encode() + source.randbytes(source.choice([0, 3, 4, 8, 500, 4076]))
    for _ in range(300):
        yield mutated(source, request(source.choice([3, 4, 9]), source.choice(VALID_TEXTS)))


@pytest.mark.parametrize("seed", range(3))
def test_daemon_survives_hostile_datagrams(scratch_card: Card, udp: UdpPeer, seed: int) -> None:
    pid = scratch_card.daemon.pid
    for data in random_datagrams(random.Random(seed)):
        udp.send(data)
        udp.settle()
    assert scratch_card.daemon.pid == pid


def random_streams(source: random.Random) -> Iterator[bytes]:
    for _ in range(15):
        yield source.randbytes(source.choice([1, 19, 20, 21, 1000, 20000]))
    for command in (0, 1, 2, 7, 8, 16, 17, 0xFFFF) * 2:
        yield Header(
            command=command, message_format=1, payload_length=source.choice([0, 3, 4, 5, 1024, 1 << 31, (1 << 32) - 1])
        ).encode() + source.randbytes(source.choice([0, 4, 1024, 5000]))
    for _ in range(15):
        yield mutated(source, request(Command.TIME_SET, time_reference("Never")))
    for _ in range(10):
        yield mutated(source, golden.UPLOAD.request)


@pytest.mark.parametrize("seed", range(3))
def test_daemon_survives_hostile_streams(scratch_card: Card, connect: Callable[[], TcpPeer], seed: int) -> None:
    pid = scratch_card.daemon.pid
    for data in random_streams(random.Random(seed)):
        peer = connect()
        try:
            peer.send(data)
        except OSError:
            pass  # the card has closed the connection already
        peer.close()
    assert connect().ask(request(Command.VERSIONS)).header.status == Status.SUCCESS
    assert scratch_card.daemon.pid == pid


@pytest.mark.parametrize("depth", [200, 1000])
def test_deep_documents_do_no_harm(card: Card, udp: UdpPeer, depth: int) -> None:
    text = '<IpConfiguration From="a" To="nobody">' + "<a>" * depth
    assert udp.is_ignored(request(Command.IP_SET, text))


def test_entities_that_grow_without_end_do_no_harm(card: Card, udp: UdpPeer) -> None:
    entities = "".join(f"<!ENTITY e{n} '{f'&e{n - 1};' * 10 if n else 'x' * 10}'>" for n in range(12))
    text = f"<!DOCTYPE RebootCard [{entities}]><RebootCard From='&e11;' To='nobody'/>"
    assert udp.ask(request(Command.REBOOT, text)).header.status == Status.FAILURE


def test_files_are_not_read_through_entities(card: Card, udp: UdpPeer) -> None:
    text = "<!DOCTYPE a SYSTEM 'file:///etc/passwd'><RebootCard From='a' To='nobody'/>"
    assert udp.ask(request(Command.REBOOT, text)).header.status == Status.FAILURE


def test_format_letters_in_a_text_are_only_text(card: Card, udp: UdpPeer) -> None:
    assert udp.is_ignored(request(Command.REBOOT, reboot_card(to="%s%s%n%n")))
    card.records.wait_log('Message is for "%s%s%n%n" not for me "card1", drop it')


def test_many_datagrams_at_once_do_no_harm(card: Card, udp: UdpPeer, udp1: UdpPeer) -> None:
    for number in range(100):
        udp.send(request(0x42, sequence=number))
        udp1.send(request(3, ip_configuration(to="nobody")))
    assert udp.settle()[0].header.sequence == 0
    assert udp1.settle() == []
