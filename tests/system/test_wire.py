# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The tests' own codec, against bytes written by hand."""

import pytest
from support import documents
from wire import Command, Header, Message, Sections, Status, golden, masked, reply_to, request
from wire.masking import changing_value
from wire.sections import BadPayload

REQUESTS = [
    (golden.VERSIONS, request(Command.VERSIONS, sequence=7)),
    (golden.TIME_GET, request(Command.TIME_GET, sequence=10)),
    (golden.TIME_SET, request(Command.TIME_SET, documents.time_reference(server="10.0.0.9"), sequence=11)),
    (golden.IP_GET, request(Command.IP_GET, documents.ip_configuration(), sequence=0x12345678)),
    (
        golden.IP_SET,
        request(Command.IP_SET, documents.ip_configuration(documents.interface("VemkEth1", "Dhcp")), sequence=13),
    ),
    (golden.REBOOT, request(Command.REBOOT, documents.reboot_card(), sequence=0xDEADBEEF)),
]


@pytest.mark.parametrize(("exchange", "encoded"), REQUESTS, ids=[str(exchange) for exchange, _ in REQUESTS])
def test_request_is_encoded_as_written_by_hand(exchange: golden.Exchange, encoded: bytes) -> None:
    assert encoded == exchange.request


@pytest.mark.parametrize("exchange", golden.EVERY, ids=str)
def test_message_written_by_hand_survives_decoding_and_encoding(exchange: golden.Exchange) -> None:
    assert Message.decode(exchange.request).encode() == exchange.request
    assert Message.decode(exchange.reply).encode() == exchange.reply


@pytest.mark.parametrize("exchange", golden.EVERY, ids=str)
def test_lengths_written_by_hand_agree(exchange: golden.Exchange) -> None:
    for message in (Message.decode(exchange.request), Message.decode(exchange.reply)):
        assert message.header.payload_length == len(message.payload)
        assert message.sections.encode() == message.payload


@pytest.mark.parametrize("exchange", golden.EVERY, ids=str)
def test_reply_written_by_hand_answers_its_request(exchange: golden.Exchange) -> None:
    asked, answered = Message.decode(exchange.request).header, Message.decode(exchange.reply).header
    assert (answered.command, answered.sequence) == (reply_to(asked.command), asked.sequence)
    assert answered.status == Status.SUCCESS


def test_header_fields_travel_in_order_and_little_endian() -> None:
    header = Header(0x04030201, 0x05, 0x06, 0x07, 0x08, 0x0A09, 0x0B, 0x0C, 0x100F0E0D, 0x14131211)
    assert header.encode() == bytes(range(1, 21))
    assert Header.decode(bytes(range(1, 21))) == header


def test_sections_travel_from_wide_to_narrow() -> None:
    sections = Sections((0x0102030405060708,), (0x11121314,), (0x2122,), b"\x31")
    assert sections.message_format == 0x0F
    assert sections.encode() == bytes.fromhex(
        "08 00 00 00 08 07 06 05 04 03 02 01  04 00 00 00 14 13 12 11  02 00 00 00 22 21  01 00 00 00 31"
    )
    assert Sections.decode(0x0F, sections.encode()) == sections


def test_text_of_ten_characters_has_count_11_and_payload_length_15() -> None:
    encoded = request(1, "0123456789")
    assert encoded[16:24] == bytes.fromhex("0f 00 00 00  0b 00 00 00")


@pytest.mark.parametrize("payload", ["", "01 00 00", "02 00 00 00 61", "01 00 00 00 61 62"])
def test_payload_that_is_not_one_section_is_refused(payload: str) -> None:
    with pytest.raises(BadPayload):
        Sections.decode(1, bytes.fromhex(payload))


def test_reply_identifier_of_a_reply_is_itself() -> None:
    assert (reply_to(0x0011), reply_to(0x8011)) == (0x8011, 0x8011)


def told_at(moment: str, server: str = "10.0.0.1") -> bytes:
    text = f'<TimeReferenceConfiguration Mode="Ntp" NtpServer="{server}" DateTime="{moment}"/>'
    return request(0x8010, text, status=Status.SUCCESS)


def test_replies_that_differ_in_the_time_of_day_are_the_same_when_masked() -> None:
    early, late = told_at("2026-03-04T05:06:07"), told_at("2027-03-04T05:06:07")
    assert early != late
    assert masked(early + golden.VERSIONS.reply + late) == masked(late + golden.VERSIONS.reply + early)


@pytest.mark.parametrize(
    ("example", "same", "other"),
    [("1234", "7", "-7"), ("0.10", "12.34", "12.3"), ("12:34", "98:76", "9:8"), ("1.5 s", "7.2 s", "7.2 m")],
)
def test_value_that_changes_is_known_by_its_form(example: str, same: str, other: str) -> None:
    value = changing_value("For", f'<Up Since="1" For="{example}"/>')
    told = f'<Up Since="2" For="{same}"/><Up For="{other}"/><Up NotFor="{example}"/>'
    assert value.sub("*", told) == told.replace(f' For="{same}"', ' For="*"')


def test_values_that_change_may_be_told_in_one_sentence() -> None:
    reply = "Reply. `One`, `Five`\nand `Fifteen` differ from run to run; `Up` is a time. `Up` differs from run to run:"
    page = f"### 20: load\n\n    81 c3\n\n{reply}\n\n    9a ff\n"
    assert golden.read_exchanges(page)[20].changing == ("One", "Five", "Fifteen", "Up")


def test_masking_leaves_every_other_difference() -> None:
    one = told_at("2026-03-04T05:06:07")
    cut = one[:-1]
    others = [told_at("2026-03-04 05:06:07"), told_at("2026-03-04T05:06:07", "10.0.0.2"), cut, one + one, b"", b"x"]
    assert len({masked(data) for data in [one, *others]}) == len(others) + 1
    assert [masked(data) for data in (cut, golden.TIME_SET.reply, b"x")] == [cut, golden.TIME_SET.reply, b"x"]
