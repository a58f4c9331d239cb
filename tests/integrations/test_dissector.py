# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The dissector for Wireshark, through the real tshark."""

import struct
from collections.abc import Callable
from pathlib import Path

import pytest
from capture import Capture
from dissection import Dissection
from wire import Command, Header, golden, reply_to, request

_VERSIONS = golden.VERSIONS
Dissect = Callable[[Capture], Dissection]


@pytest.fixture
def dissect(tmp_path: Path) -> Dissect:
    return lambda capture: Dissection(capture.write(tmp_path / "capture.pcap"))


def _add(capture: Capture, exchange: golden.Exchange) -> Capture:
    if exchange in golden.UDP:
        return capture.udp(exchange.request).udp(exchange.reply, from_card=True)
    return capture.tcp(exchange.request).tcp(exchange.reply, from_card=True)


def _exchange(exchange: golden.Exchange) -> Capture:
    return _add(Capture(), exchange)


@pytest.fixture(scope="module")
def every_exchange(tmp_path_factory: pytest.TempPathFactory) -> Dissection:
    capture = Capture()
    for exchange in golden.EVERY:
        _add(capture, exchange)
    return Dissection(capture.write(tmp_path_factory.mktemp("capture") / "every.pcap"))


def _told(data: bytes) -> tuple[str, ...]:
    header = Header.decode(data)
    is_reply = header.command >= 0x8000
    address = (header.version, f"{header.message_format:#04x}", header.device, header.service, header.command & 0x7FFF)
    rest = (int(is_reply), header.status, f"{header.sequence:#010x}", header.payload_length)
    return tuple(str(value) for value in address + rest)


def test_each_field_of_every_exchange_is_told(every_exchange: Dissection) -> None:
    names = ("version", "format", "device", "service", "command", "reply", "status", "sequence", "length")
    rows = every_exchange.fields(*(f"tarvel.{name}" for name in names))
    assert rows == [_told(data) for exchange in golden.EVERY for data in (exchange.request, exchange.reply)]


def test_nothing_is_wrong_with_any_exchange(every_exchange: Dissection) -> None:
    assert every_exchange.complaints() == []


def test_request_and_reply_know_each_other_and_the_time_between(every_exchange: Dissection) -> None:
    rows = every_exchange.fields("tarvel.response_in", "tarvel.request_in", "tarvel.time")
    pairs = [[(str(n + 1), "", ""), ("", str(n), "0.001000000")] for n in range(1, 2 * len(golden.EVERY), 2)]
    assert rows == [row for pair in pairs for row in pair]


def test_text_is_told_and_its_elements_by_the_xml_dissector(dissect: Dissect) -> None:
    details = dissect(_exchange(golden.TIME_GET)).details()
    assert '<TimeReferenceConfiguration Mode="Manual" NtpServer="10.0.0.1"' in details
    assert "eXtensible Markup Language" in details


def test_archive_is_no_text(dissect: Dissect) -> None:
    rows = dissect(_exchange(golden.UPLOAD)).fields("tarvel.text", "tarvel.section.count")
    assert rows[0] == ("", "117")


def test_info_names_the_command_and_the_outcome(dissect: Dissect) -> None:
    rows = dissect(_exchange(_VERSIONS)).fields("_ws.col.Protocol", "_ws.col.Info")
    assert rows == [
        ("TARVEL", "Request, versions report, sequence 0x7"),
        ("TARVEL", "Reply, versions report: success, sequence 0x7"),
    ]


def test_each_command_has_a_name(every_exchange: Dissection) -> None:
    rows = every_exchange.fields("_ws.col.Info", display="tarvel.reply == 0")
    assert [row[0].split(", ")[1] for row in rows] == [exchange.name for exchange in golden.EVERY]


def test_several_messages_in_one_segment_are_several(dissect: Dissect) -> None:
    data = request(Command.VERSIONS, sequence=1) + request(Command.TIME_GET, sequence=2)
    rows = dissect(Capture().tcp(data)).fields("tarvel.sequence")
    assert rows == [("0x00000001,0x00000002",)]


@pytest.mark.parametrize("cut", [1, 19, 20, 22, 300])
def test_message_in_two_segments_is_one(dissect: Dissect, cut: int) -> None:
    reply = _VERSIONS.reply
    capture = Capture().tcp(_VERSIONS.request).tcp(reply[:cut], from_card=True).tcp(reply[cut:], from_card=True)
    rows = dissect(capture).fields("frame.number", "tarvel.length", display="tarvel.reply == 1")
    assert rows == [("3", "338")]


def test_large_message_is_put_together_of_all_its_segments(dissect: Dissect) -> None:
    data = request(Command.UPLOAD, b"x" * 9000)
    capture = Capture()
    for start in range(0, len(data), 1400):
        capture.tcp(data[start : start + 1400])
    assert dissect(capture).fields("frame.number", "tarvel.section.count") == [("7", "9001")]


def test_two_requests_at_once_have_their_own_replies(dissect: Dissect) -> None:
    capture = Capture().tcp(request(Command.VERSIONS, sequence=1) + request(0x42, sequence=2))
    capture.tcp(request(reply_to(Command.VERSIONS), sequence=1, status=1), from_card=True)
    capture.tcp(request(reply_to(0x42), sequence=2, status=6), from_card=True)
    rows = dissect(capture).fields("tarvel.response_in", "tarvel.request_in")
    assert rows == [("2,3", ""), ("", "1"), ("", "1")]


def test_reply_without_its_request_stands_alone(dissect: Dissect) -> None:
    capture = Capture().udp(golden.IP_GET.reply, from_card=True)
    assert dissect(capture).fields("tarvel.request_in") == [("",)]


def test_refusal_is_noted_with_its_status(dissect: Dissect) -> None:
    capture = Capture().udp(request(0x42)).udp(request(reply_to(0x42), status=6), from_card=True)
    assert dissect(capture).complaints() == ["unknown command"]


@pytest.mark.parametrize(
    ("fields", "complaint"),
    [
        ({"version": 2}, "version 2 instead of 1"),
        ({"device": 7}, "device 7 instead of 5"),
        ({"service": 3}, "service 3 instead of 4"),
        ({"start_pattern": 1}, "Unusual start pattern"),
    ],
)
def test_unusual_header_is_noted(dissect: Dissect, fields: dict[str, int], complaint: str) -> None:
    assert dissect(Capture().udp(request(Command.VERSIONS, None, **fields))).complaints() == [complaint]


@pytest.mark.parametrize("size", [1, 19])
def test_datagram_too_short_for_a_header_is_malformed(dissect: Dissect, size: int) -> None:
    assert dissect(Capture().udp(b"x" * size)).complaints() == ["Too short for a header"]


def test_datagram_that_ends_before_its_payload_is_malformed(dissect: Dissect) -> None:
    complaints = dissect(Capture().udp(golden.IP_GET.request[:-6])).complaints()
    assert complaints == ["46 bytes of payload announced", " 40 there", "42 bytes announced", " 36 there"]


def test_length_that_nobody_sends_does_not_stop_the_dissection(dissect: Dissect) -> None:
    data = request(Command.UPLOAD, message_format=1, payload_length=0xFFFFFFFF)
    capture = Capture().udp(data).tcp(data)
    assert dissect(capture).fields("tarvel.length", display="udp && tarvel") == [("4294967295",)]


def test_text_without_its_nul_is_noted(dissect: Dissect) -> None:
    text = b"<RebootCard/>"
    payload = struct.pack("<I", len(text)) + text
    data = request(Command.REBOOT, message_format=1, payload_length=len(payload)) + payload
    assert dissect(Capture().udp(data)).complaints() == ["Text without its NUL"]


def test_all_four_sections_are_told_in_their_order(dissect: Dissect) -> None:
    payload = b"".join(struct.pack("<I", size) + b"\1" * size for size in (8, 4, 2)) + struct.pack("<I", 2) + b"a\0"
    data = request(0x42, message_format=15, payload_length=len(payload)) + payload
    dissection = dissect(Capture().udp(data))
    assert dissection.fields("tarvel.section.count", "tarvel.text") == [("8,4,2,2", "a")]
    assert dissection.complaints() == []


def test_bytes_behind_the_last_section_are_malformed(dissect: Dissect) -> None:
    payload = struct.pack("<I", 2) + b"a\0" + b"more"
    data = request(0x42, message_format=1, payload_length=len(payload)) + payload
    assert dissect(Capture().udp(data)).complaints() == ["4 bytes behind the last section"]
