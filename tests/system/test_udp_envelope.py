# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The frame of every datagram command: one text section, an envelope, an address."""

import pytest
from support.daemon import IS_HARDENED
from support.documents import envelope, ip_configuration, reboot_card
from support.peers import BROADCAST, Answer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Format, Header, Sections, Status, request

COMMANDS = {Command.IP_SET: "IPConfigSet", Command.IP_GET: "IPConfigGet", Command.REBOOT: "RebootCard"}
NO_ERROR = "warning xmlTextReaderGetAttribute() failed: no error recorded"


def is_broadcast_failure(answer: Answer, command: int, sequence: int = 0) -> bool:
    expected = Header(command=command | 0x8000, status=Status.FAILURE, sequence=sequence)
    return (answer.header, answer.message.payload, answer.destination) == (expected, b"", BROADCAST)


@pytest.mark.parametrize("device", ["udp", "udp1"])
@pytest.mark.parametrize("command", COMMANDS, ids=COMMANDS.values())
def test_request_without_a_section_is_refused_to_everybody(
    card: Card, watch: Watch, request: pytest.FixtureRequest, device: str, command: Command
) -> None:
    peer: UdpPeer = request.getfixturevalue(device)
    answer = peer.ask(Header(command=command, sequence=0xCAFE).encode())
    assert is_broadcast_failure(answer, command, 0xCAFE)
    assert watch.log()[1:] == [f"warning {COMMANDS[command]} message should only contain a 8-bit section!"]


@pytest.mark.parametrize(
    "sections",
    [
        Sections(words32=(1,), data=b"x\0"),
        Sections(words16=(1, 2), data=b"x\0"),
        Sections(words64=(1,), data=b"x\0"),
        Sections(words64=(1,), words32=(2,), words16=(3,)),
    ],
    ids=["32 and 8", "16 and 8", "64 and 8", "all but 8"],
)
def test_request_with_another_section_is_refused(card: Card, udp: UdpPeer, sections: Sections) -> None:
    payload = sections.encode()
    header = Header(command=3, message_format=sections.message_format, payload_length=len(payload))
    assert is_broadcast_failure(udp.ask(header.encode() + payload), 3)


@pytest.mark.parametrize("extra", [0x20, 0x40, 0x60])
def test_upper_format_bits_are_not_looked_at(card: Card, udp: UdpPeer, extra: int) -> None:
    answer = udp.ask(request(3, ip_configuration(), message_format=Format.SECTION_8 | extra))
    assert (answer.header.status, answer.header.message_format) == (Status.SUCCESS, 1)


def test_format_bit_4_counts_as_a_section(card: Card, udp: UdpPeer) -> None:
    assert is_broadcast_failure(udp.ask(request(3, ip_configuration(), message_format=0x11)), 3)


def test_refused_section_dumps_the_header_to_standard_output(card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(request(9, message_format=6, sequence=0xBEEF, status=0xFE, command_version=3))
    assert watch.console().splitlines() == [
        "Start pattern    (32bit): 0xff9ac381",
        "Version          ( 8bit): 0x1",
        "Message format   ( 8bit): 0x6",
        "Device           ( 8bit): 0x5",
        "Service          ( 8bit): 0x4",
        "Command ID       (16bit): 0x9",
        "Status           ( 8bit): 0xfe",
        "command version  ( 8bit): 0x3",
        "Sequence ID      (32bit): 0xbeef",
        "Payload length   (32bit): 0",
    ]


DOCTYPE = "Document refused: it has a document type declaration" if IS_HARDENED else "Wrong node type: 10"
BAD_DOCUMENTS = [
    ("<Other From='a' To='card1'/>", ["warning Wrong node name: Other"]),
    ("<ipConfiguration From='a' To='card1'/>", ["warning Wrong node name: ipConfiguration"]),
    ("<RebootCar From='a' To='card1'/>", ["warning Wrong node name: RebootCar"]),
    ("<!-- first --><RebootCard From='a' To='card1'/>", ["warning Wrong node name: #comment"]),
    ("<?RebootCard x?><RebootCard From='a' To='card1'/>", ["warning Wrong node type: 7"]),
    ("<!DOCTYPE RebootCard><RebootCard From='a' To='card1'/>", [f"warning {DOCTYPE}"]),
    ("<RebootCard/>", ["warning No attributes in node: RebootCard"]),
    ("<RebootCard Frm='a' To='card1'/>", [NO_ERROR, "warning Datagram sender identity is missing"]),
    ("<RebootCard From='a' to='card1'/>", [NO_ERROR, "warning Datagram target is missing"]),
]


@pytest.mark.parametrize("command", COMMANDS, ids=COMMANDS.values())
@pytest.mark.parametrize(("document", "warnings"), BAD_DOCUMENTS, ids=[text for text, _ in BAD_DOCUMENTS])
def test_bad_envelope_is_logged_and_refused(
    card: Card, udp: UdpPeer, watch: Watch, command: Command, document: str, warnings: list[str]
) -> None:
    answer = udp.ask(request(command, document, sequence=4))
    assert is_broadcast_failure(answer, command, 4)
    assert watch.log()[1:] == warnings
    assert watch.commands() == []


@pytest.mark.parametrize("text", ["", " ", "\n\n", "no XML", "<", "<RebootCard", "\xff", "&amp;"])
def test_text_that_is_no_document_is_refused_with_one_warning(
    card: Card, udp: UdpPeer, watch: Watch, text: str
) -> None:
    assert is_broadcast_failure(udp.ask(request(9, text.encode("latin-1"))), 9)
    warnings = watch.log()[1:]
    assert len(warnings) == 1
    assert warnings[0].startswith("warning xml")


def test_parse_error_is_logged_without_a_line_end_and_printed_nowhere(
    card: Card, udp: UdpPeer, watch: Watch
) -> None:
    udp.ask(request(9, "no XML"))
    warning = watch.log()[1]
    assert warning.startswith("warning xmlTextReaderRead() failed: ")
    assert not warning.endswith(("\n", ": ", ": no error recorded"))
    assert watch.console() == ""


def test_missing_attribute_does_not_repeat_an_older_error(card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(request(9, "no XML"))
    udp.ask(request(9, "<RebootCard From='a'/>"))
    assert watch.log()[-2:] == [NO_ERROR, "warning Datagram target is missing"]


@pytest.mark.parametrize("to", ["card2", "Card1", "card", "card11", " card1", ""])
def test_request_for_another_name_is_dropped(card: Card, udp: UdpPeer, watch: Watch, to: str) -> None:
    assert udp.is_ignored(request(9, reboot_card(to=to)))
    assert watch.log()[1] == f'info Message is for "{to}" not for me "card1", drop it'
    assert watch.commands() == []


def test_any_sender_is_accepted(card: Card, udp: UdpPeer) -> None:
    assert udp.ask(request(3, ip_configuration(sender=""))).text.startswith('<IpConfiguration From="card1" To="">')


def test_root_that_only_begins_like_one_is_accepted(card: Card, udp: UdpPeer) -> None:
    assert udp.ask(request(3, envelope("IpConfigurationFoo"))).header.status == Status.SUCCESS


def test_root_is_not_tied_to_the_command(card: Card, udp: UdpPeer) -> None:
    assert udp.ask(request(3, reboot_card())).text.startswith("<IpConfiguration ")


def test_document_ends_at_its_first_nul(card: Card, udp: UdpPeer) -> None:
    assert udp.ask(request(3, ip_configuration() + "\0<rubbish")).header.status == Status.SUCCESS


def test_root_need_not_be_closed(card: Card, udp: UdpPeer) -> None:
    assert udp.ask(request(3, '<IpConfiguration From="a" To="card1">')).header.status == Status.SUCCESS


def test_references_in_the_envelope_are_resolved(card: Card, udp: UdpPeer) -> None:
    answer = udp.ask(request(3, ip_configuration(to="&#99;ard1", sender="a&amp;b")))
    assert answer.text.startswith('<IpConfiguration From="card1" To="a&b">')
