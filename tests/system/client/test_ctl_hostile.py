# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Cards that answer what no card should: the client never crashes, hangs or believes."""

import itertools
import random

import pytest
from support.ctl import Ctl
from support.fake_card import FakeTcpCard, FakeUdpCard, answer
from wire import Message, text_payload
from wire.numbers import Format, Status

VERSIONS = text_payload('<Versions>\n\t<Component Id="kernel" Version="6.1"/>\n</Versions>')
TIME = text_payload('<TimeReferenceConfiguration Mode="Ntp" NtpServer="a" DateTime="2026-03-04T05:06:07"/>')


def ip_text(request: Message, card: str = "evil") -> bytes:
    return text_payload(
        f'<IpConfiguration From="{card}" To="tarvelctl"><Interface Name="VemkEth1" Mode="Dhcp"/>'
        '<Interface Name="VemkEth2" Mode="Disabled"/></IpConfiguration>'
    )


def good(request: Message) -> bytes:
    return answer(request, VERSIONS, Format.SECTION_8)


def spoiled(position: int, value: bytes) -> "object":
    def respond(request: Message) -> bytes:
        reply = good(request)
        return reply[:position] + value + reply[position + len(value) :]

    return respond


WRONG = {
    "start pattern": spoiled(0, b"HTTP"),
    "version": spoiled(4, b"\x02"),
    "format 0": spoiled(5, b"\x00"),
    "two sections": spoiled(5, b"\x03"),
    "other command": spoiled(8, b"\x10\x80"),
    "no reply flag": spoiled(8, b"\x01\x00"),
    "status 0": spoiled(10, b"\x00"),
    "status 7": spoiled(10, b"\x07"),
    "sequence": spoiled(12, b"\x00\x00\x00\x00"),
    "huge length": spoiled(16, b"\xff\xff\xff\xff"),
    "short count": spoiled(20, b"\x05"),
    "long count": spoiled(20, b"\xff\xff\xff\xff"),
    "no NUL": lambda request: good(request)[:-1] + b"x",
    "no text": lambda request: answer(request),
    "not a report": lambda request: answer(request, text_payload("<Nonsense/>"), Format.SECTION_8),
    "binary": lambda request: answer(request, text_payload(bytes(range(1, 256))), Format.SECTION_8),
}


@pytest.mark.parametrize("name", WRONG)
def test_a_wrong_answer_is_exit_4(ctl: Ctl, name: str) -> None:
    with FakeTcpCard(WRONG[name]) as card:  # type: ignore[arg-type]
        result = ctl.json("versions", card.address)
    assert result.code == 4
    assert "components" not in result.result or result.result["components"] == []


@pytest.mark.parametrize("length", [0, 1, 19, 20, 23, 24, 40])
def test_an_answer_that_breaks_off_is_no_answer(ctl: Ctl, length: int) -> None:
    with FakeTcpCard(lambda request: good(request)[:length]) as card:
        assert ctl("--retries", "0", "versions", card.address).code == 5


def test_an_answer_in_single_bytes_that_never_ends_is_no_answer(ctl: Ctl) -> None:
    with FakeTcpCard(lambda request: good(request)[:30] + b"") as card:
        assert ctl("--timeout", "0.5", "--retries", "0", "versions", card.address).code == 5


def test_control_characters_do_not_reach_the_terminal(ctl: Ctl) -> None:
    text = text_payload('<Versions>\n\t<Component Id="a" Version="\x1b[31m"/>\n</Versions>')
    with FakeTcpCard(lambda request: answer(request, text, Format.SECTION_8)) as card:
        result = ctl("versions", card.address)
    assert result.code == 0
    assert "\x1b" not in result.out + result.err


def test_bytes_that_are_no_text_are_valid_json_all_the_same(ctl: Ctl) -> None:
    text = text_payload(b'<Versions>\n\t<Component Id="a" Version="\xff\xfe"/>\n</Versions>')
    with FakeTcpCard(lambda request: answer(request, text, Format.SECTION_8)) as card:
        assert ctl.json("versions", card.address).result["components"][0]["component"] == "a"


def test_random_changes_never_crash_it(ctl: Ctl) -> None:
    dice = random.Random(20260304)

    def respond(request: Message) -> bytes:
        reply = bytearray(good(request))
        for _ in range(dice.randint(1, 6)):
            reply[dice.randrange(len(reply))] = dice.randrange(256)
        return bytes(reply[: dice.randint(1, len(reply))])

    with FakeTcpCard(respond) as card:
        for _ in range(60):
            assert ctl("--timeout", "0.3", "--retries", "0", "versions", card.address).code in (0, 3, 4, 5)


def wrong_datagrams(request: Message) -> list[bytes]:
    """None of these is the answer: all must be passed over."""
    right = answer(request, ip_text(request), Format.SECTION_8)
    other_card = answer(request, ip_text(request, "other"), Format.SECTION_8)
    return [
        b"",
        right[:19],
        right[:-1],
        right + b"x",
        right[:12] + b"\0\0\0\0" + right[16:],
        right[:8] + b"\x03\x00" + right[10:],
        right[:8] + b"\x04\x80" + right[10:],
        b"HTTP" + right[4:],
        other_card,
    ]


def test_datagrams_that_are_no_answer_are_passed_over(ctl: Ctl) -> None:
    def respond(request: Message) -> list[bytes]:
        return [*wrong_datagrams(request), answer(request, ip_text(request), Format.SECTION_8)]

    with FakeUdpCard(respond):
        assert ctl.json("-i", "lan0", "ip", "get", "evil").code == 0


def test_they_alone_are_no_answer(ctl: Ctl) -> None:
    with FakeUdpCard(wrong_datagrams):
        assert ctl("-i", "lan0", "--timeout", "0.5", "ip", "get", "evil").code == 5


def test_an_answer_from_another_port_is_none(ctl: Ctl) -> None:
    with FakeUdpCard(lambda request: [answer(request, ip_text(request), Format.SECTION_8)], port=50004):
        assert ctl("-i", "lan0", "--timeout", "0.5", "ip", "get", "evil").code == 5


def test_a_text_that_makes_no_sense_is_exit_4(ctl: Ctl) -> None:
    with FakeUdpCard(lambda request: [answer(request, text_payload("<What/>"), Format.SECTION_8)]):
        assert ctl("-i", "lan0", "ip", "get", "evil").code == 4


def test_a_refusal_is_exit_3(ctl: Ctl) -> None:
    with FakeUdpCard(lambda request: [answer(request, status=Status.FAILURE)]):
        assert ctl("-i", "lan0", "ip", "get", "evil").code == 3


def test_a_flood_ends_with_the_time(ctl: Ctl) -> None:
    """Of one who never stops."""
    with FakeUdpCard(lambda request: itertools.cycle(wrong_datagrams(request))):
        assert ctl("-i", "lan0", "--timeout", "0.5", "ip", "get", "evil").code == 5


def test_a_server_for_the_shell_is_not_sent_back(ctl: Ctl) -> None:
    text = text_payload('<TimeReferenceConfiguration Mode="Ntp" NtpServer="$(reboot)" DateTime="2026-03-04T05:06:07"/>')
    with FakeTcpCard(lambda request: answer(request, text, Format.SECTION_8)) as card:
        assert ctl("time", "set", "--manual", "now", card.address).code == 2
    assert [request.header.command for request in card.requests] == [16]


def test_a_time_that_was_not_taken_is_exit_7(ctl: Ctl) -> None:
    def respond(request: Message) -> bytes:
        return answer(request, TIME, Format.SECTION_8) if request.header.command == 16 else answer(request)

    with FakeTcpCard(respond) as card:
        assert ctl("time", "set", "--ntp", "b", card.address).code == 7
