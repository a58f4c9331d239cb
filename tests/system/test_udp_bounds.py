# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A datagram is what came, and nothing of an earlier one."""

import struct

import pytest
from support.documents import ip_configuration, reboot_card
from support.peers import BROADCAST, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Format, Header, Status, request


def is_failure(peer: UdpPeer, data: bytes) -> bool:
    answer = peer.ask(data)
    return (answer.header.status, answer.destination) == (Status.FAILURE, BROADCAST)


@pytest.mark.parametrize("size", [0, 1, 4, 19])
def test_datagram_shorter_than_a_header_is_dropped_with_a_warning(
    card: Card, udp: UdpPeer, watch: Watch, size: int
) -> None:
    assert udp.is_ignored(request(0x42)[:size])
    assert watch.log()[:2] == [
        udp.logged(size),
        f"warning Datagram of {size} bytes is too short for a header, drop it",
    ]


def test_header_alone_after_a_reboot_request_does_not_reboot_again(
    scratch_card: Card, udp: UdpPeer, watch: Watch
) -> None:
    scratch_card.inside.hold("reboot")
    valid = request(Command.REBOOT, reboot_card())
    assert udp.ask(valid).header.status == Status.SUCCESS
    assert is_failure(udp, valid[:20])
    assert watch.commands() == ["reboot -d 2 &"]


def test_short_datagram_after_a_valid_one_sees_nothing_of_it(card: Card, udp: UdpPeer) -> None:
    valid = request(Command.IP_GET, ip_configuration())
    assert udp.ask(valid).header.status == Status.SUCCESS
    assert is_failure(udp, valid[:24])


@pytest.mark.parametrize("missing", [1, 5, 20])
def test_text_that_is_cut_off_is_not_completed_from_the_datagram_before(
    card: Card, udp: UdpPeer, missing: int
) -> None:
    valid = request(Command.IP_GET, ip_configuration())
    udp.ask(valid)
    cut = valid[: len(valid) - 1 - missing]
    assert is_failure(udp, cut)


def test_request_without_payload_length_has_an_empty_text(card: Card, udp: UdpPeer, watch: Watch) -> None:
    assert is_failure(udp, request(Command.IP_GET, ip_configuration(), payload_length=0))
    assert len(watch.log()) == 2


@pytest.mark.parametrize("count", [0, 3])
def test_text_ends_where_its_count_says(card: Card, udp: UdpPeer, count: int) -> None:
    text = ip_configuration().encode()
    payload = struct.pack("<I", count) + text
    assert is_failure(udp, Header(command=3, message_format=1, payload_length=len(payload)).encode() + payload)


@pytest.mark.parametrize("count", [0xFFFFFFFF, 0x80000000, 4096, 1000])
def test_count_beyond_the_datagram_means_the_bytes_that_came(card: Card, udp: UdpPeer, count: int) -> None:
    payload = struct.pack("<I", count) + ip_configuration().encode()
    header = Header(command=3, message_format=1, payload_length=len(payload))
    assert udp.ask(header.encode() + payload).header.status == Status.SUCCESS


@pytest.mark.parametrize("length", [1, 4, 0xFFFFFFFF])
def test_payload_length_only_says_whether_there_is_a_payload(card: Card, udp: UdpPeer, length: int) -> None:
    assert udp.ask(request(3, ip_configuration(), payload_length=length)).header.status == Status.SUCCESS


def test_raw_flag_gives_the_same_text(card: Card, udp: UdpPeer) -> None:
    answer = udp.ask(request(3, ip_configuration(), message_format=Format.SECTION_8 | Format.RAW))
    assert (answer.header.status, answer.header.message_format) == (Status.SUCCESS, Format.SECTION_8)


@pytest.mark.parametrize("message_format", [0x0F, 0x0E, 0x08, 0x1F])
@pytest.mark.parametrize("payload", [b"\xff\xff\xff\xff", b"\xf0\x0f\x00\x00", bytes(3)], ids=["4G", "4080", "short"])
def test_sections_that_lie_about_their_size_are_refused(
    card: Card, udp: UdpPeer, message_format: int, payload: bytes
) -> None:
    header = Header(command=3, message_format=message_format, payload_length=len(payload))
    assert is_failure(udp, header.encode() + payload)


def test_request_that_fills_the_buffer_is_read_to_its_end(card: Card, udp: UdpPeer) -> None:
    room = 4096 - 24 - 1
    text = ip_configuration()
    assert udp.ask(request(3, text + " " * (room - len(text)))).header.status == Status.SUCCESS


def test_what_does_not_fit_into_the_buffer_is_cut(card: Card, udp: UdpPeer, watch: Watch) -> None:
    assert udp.ask(request(3, ip_configuration() + " " * 9000)).header.status == Status.SUCCESS
    assert watch.log()[0] == udp.logged(4096)


def test_reply_that_does_not_fit_into_a_datagram_is_a_failure(card: Card, udp: UdpPeer, watch: Watch) -> None:
    name = "n" * 4000
    answer = udp.ask(request(Command.IP_GET, ip_configuration(sender=name), sequence=8))
    assert answer.header == Header(command=0x8003, status=Status.FAILURE, sequence=8)
    assert answer.destination == BROADCAST
    size = len(card_reply(name))
    assert watch.log()[-1] == f"warning Reply of {size} characters does not fit into a datagram"


def card_reply(name: str) -> str:
    interfaces = "".join(
        f'<Interface Name="VemkEth{number + 1}" Mode="Static" Address="10.0.{number}.11" Netmask="255.255.255.0"/>'
        for number in (0, 1)
    )
    return f'<IpConfiguration From="card1" To="{name}">{interfaces}</IpConfiguration>'


def test_largest_reply_still_goes_out(card: Card, udp: UdpPeer) -> None:
    room = 4096 - 24 - 1
    name = "n" * (room - len(card_reply("")))
    answer = udp.ask(request(Command.IP_GET, ip_configuration(sender=name)))
    assert answer.text == card_reply(name)
    too_long = udp.ask(request(Command.IP_GET, ip_configuration(sender=name + "n")))
    assert too_long.header.status == Status.FAILURE
