# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Where the card's C library and processor differ from a PC's, and the bytes on the wire do not."""

import struct

from asking import ask, ask_udp, udp_peer
from card import VirtualCard
from support.documents import interface, ip_configuration, reboot_card
from wire import Command, Status, reply_to, request

A_KILOBYTE = 1024


def test_a_log_line_is_cut_at_a_kilobyte_and_the_daemon_goes_on(card: VirtualCard) -> None:
    with udp_peer("eth0") as peer:
        assert peer.is_ignored(request(Command.REBOOT, reboot_card(to="x" * 3000)))
    card.wait_for_log('Message is for "xxx')
    line = next(line for line in card.log().splitlines() if 'Message is for "xxx' in line)
    assert A_KILOBYTE - 100 < line.count("x") < A_KILOBYTE


def test_error_texts_are_those_of_the_card_s_c_library(card: VirtualCard) -> None:
    card.wait_for_log("recv() failed: Socket not connected")


def test_bit_7_of_a_request_s_format_changes_nothing(card: VirtualCard) -> None:
    with udp_peer("eth1") as peer:
        plain = peer.ask(request(Command.IP_GET, ip_configuration()))
        marked = peer.ask(request(Command.IP_GET, ip_configuration(), message_format=0x81))
    assert plain.header.status == Status.SUCCESS
    assert marked.message == plain.message


def test_sections_at_odd_places_do_not_stop_the_daemon(card: VirtualCard) -> None:
    text = ip_configuration().encode() + b"\0"
    odd = struct.pack("<I", 3) + b"abc"
    payload = odd * 3 + struct.pack("<I", len(text)) + text
    datagram = request(Command.IP_GET, message_format=0x0F, payload_length=len(payload)) + payload
    with udp_peer("eth0") as peer:
        answer = peer.ask(datagram)
        assert (answer.header.command, answer.header.status) == (reply_to(Command.IP_GET), Status.FAILURE)
        assert peer.ask(request(Command.IP_GET, ip_configuration())).header.status == Status.SUCCESS


def test_bytes_above_127_in_a_name_come_back_as_they_were(card: VirtualCard) -> None:
    assert 'To="Grüße"' in ask_udp("eth0", Command.IP_GET, ip_configuration(sender="Grüße")).text


def test_numbers_on_the_wire_are_little_endian(card: VirtualCard) -> None:
    header = ask(0x1234).header
    assert (header.command, header.status) == (reply_to(0x1234), Status.UNKNOWN_COMMAND)


def test_an_address_with_a_command_behind_it_is_refused(card: VirtualCard) -> None:
    element = interface("VemkEth1", "Static", "10.0.0.9 ;reboot", "255.255.255.0")
    assert ask_udp("eth0", Command.IP_SET, ip_configuration(element)).header.status == Status.FAILURE
