# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Requests to set the time reference that never get to the time settings."""

import struct

import pytest
from support.documents import time_reference
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Sections, Status, request

REFUSED = Header(command=0x8011, status=Status.FAILURE)
NO_ERROR = "no error recorded"


def test_request_without_a_section_is_refused_and_dumped(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert tcp.ask(request(Command.TIME_SET)).header == REFUSED
    assert watch.log()[1:] == ["warning NTPConfigSet message should only contain a 8-bit section!"]
    assert "Command ID       (16bit): 0x11\n" in watch.console()


def test_payload_behind_a_refused_section_is_left_unread(card: Card, tcp: TcpPeer) -> None:
    sections = Sections(words16=(1,), data=b"")
    next_request = request(0x77)
    header = Header(command=17, message_format=sections.message_format, payload_length=20)
    tcp.send(header.encode() + next_request)
    assert tcp.receive().header == REFUSED
    assert tcp.receive().header == Header(command=0x8077, status=6)


def padded(size: int) -> bytes:
    """A valid payload of exactly so many bytes."""
    text = time_reference("Ntp").encode()
    data = text + b" " * (size - 4 - len(text))
    return struct.pack("<I", len(data)) + data


def test_payload_of_1024_bytes_is_accepted(scratch_card: Card, tcp: TcpPeer) -> None:
    header = Header(command=17, message_format=1, payload_length=1024)
    assert tcp.ask(header.encode() + padded(1024)).header.status == Status.SUCCESS


def test_payload_of_1025_bytes_is_refused_unread(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    header = Header(command=17, message_format=1, payload_length=1025)
    tcp.send(header.encode() + request(0x77))
    assert tcp.receive().header == REFUSED
    assert tcp.receive().header.command == 0x8077
    assert watch.log()[1] == "warning Payload is too big"


def test_client_that_closes_inside_the_payload_gets_no_reply(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    whole = request(Command.TIME_SET, time_reference())
    tcp.send(whole[:-5])
    tcp.end_sending()
    assert tcp.rest() == b""
    assert watch.commands() == []


def test_request_that_announces_no_payload_gets_no_reply(card: Card, tcp: TcpPeer) -> None:
    tcp.send(request(Command.TIME_SET, message_format=1))
    assert tcp.ask(request(0x77)).header.command == 0x8077


@pytest.mark.parametrize("count", [0xFFFFFFFF, 0x80000000, 1020, 200])
def test_count_beyond_the_payload_means_the_bytes_that_came(scratch_card: Card, tcp: TcpPeer, count: int) -> None:
    payload = struct.pack("<I", count) + time_reference("Ntp").encode()
    header = Header(command=17, message_format=1, payload_length=len(payload))
    assert tcp.ask(header.encode() + payload).header.status == Status.SUCCESS


@pytest.mark.parametrize("payload", [b"\xff", b"\0\0\0", b"\x10\0\0\0", bytes(1024)])
def test_payload_without_a_text_is_refused(card: Card, tcp: TcpPeer, payload: bytes) -> None:
    header = Header(command=17, message_format=1, payload_length=len(payload))
    assert tcp.ask(header.encode() + payload).header == REFUSED


def test_nothing_of_an_earlier_payload_is_seen(scratch_card: Card, tcp: TcpPeer) -> None:
    whole = request(Command.TIME_SET, time_reference("Ntp"))
    assert tcp.ask(whole).header.status == Status.SUCCESS
    short = Header(command=17, message_format=1, payload_length=4).encode() + whole[20:24]
    assert tcp.ask(short).header == REFUSED


def missing(*names: str) -> list[str]:
    return [f"warning Getting {name} attribute FAILED: {NO_ERROR}" for name in names]


BAD_ELEMENTS = [
    ("<TimeReference/>", ['warning Bad node name: "TimeReference" instead of "TimeReferenceConfiguration"']),
    (
        "<!-- x --><TimeReferenceConfiguration/>",
        ['warning Bad node name: "#comment" instead of "TimeReferenceConfiguration"'],
    ),
    ("<TimeReferenceConfiguration/>", missing("Mode", "NtpServer", "DateTime")),
    (time_reference(mode=None), missing("Mode")),
    (time_reference(server=None), missing("NtpServer")),
    (time_reference(date_time=None), missing("DateTime")),
    (time_reference(mode=None, server=None), missing("Mode", "NtpServer")),
    (time_reference(date_time="2021-03-04 05:06:07"), ["warning Parsing DateTime FAILED"]),
    (time_reference(date_time="2021-03-04T05:06"), ["warning Parsing DateTime FAILED"]),
    (time_reference(date_time=""), ["warning Parsing DateTime FAILED"]),
    (time_reference(date_time="1969-12-31T23:59:59"), ["warning mktime() FAILED"]),
]


@pytest.mark.parametrize(("text", "warnings"), BAD_ELEMENTS, ids=[text for text, _ in BAD_ELEMENTS])
def test_bad_element_is_logged_and_applies_nothing(
    card: Card, watch: Watch, tcp: TcpPeer, text: str, warnings: list[str]
) -> None:
    assert tcp.ask(request(Command.TIME_SET, text)).header == REFUSED
    assert watch.log()[1:] == warnings
    assert watch.commands() == []
    assert not card.inside.exists("/var/timesettings.replication")


@pytest.mark.parametrize("text", ["", " \n", "no XML", "<", "<TimeReferenceConfiguration Mode='Ntp'"])
def test_text_that_is_no_document_is_refused_with_one_warning(
    card: Card, watch: Watch, tcp: TcpPeer, text: str
) -> None:
    assert tcp.ask(request(Command.TIME_SET, text)).header == REFUSED
    warnings = watch.log()[1:]
    assert len(warnings) == 1
    assert warnings[0].startswith("warning xmlTextReaderRead() failed: ")
    assert watch.console() == ""


@pytest.mark.parametrize(
    "text",
    [
        time_reference("Ntp", element="TimeReferenceConfigurationX"),
        time_reference("Ntp").replace("/>", ">"),
        "<!DOCTYPE TimeReferenceConfiguration>" + time_reference("Ntp"),
        time_reference("Ntp").replace("<Time", "<?Time").replace("/>", "?>"),
    ],
    ids=["longer name", "not closed", "document type", "processing instruction"],
)
def test_name_is_a_prefix_and_the_node_type_is_not_looked_at(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, text: str
) -> None:
    tcp.ask(request(Command.TIME_SET, text))
    assert not any("Bad node name" in line for line in watch.log())
