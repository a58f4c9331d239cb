# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl time set: what a card has afterwards, whether it said so or not"""

import pytest
from support.ctl import Ctl
from support.fake_card import FakeTcpCard, Respond, answer
from tarvelsim import Card
from wire import Message, text_payload
from wire.numbers import Command, Format

STOCK = [f"{number}.openwrt.pool.ntp.org" for number in range(4)]


WANTED = "2026-03-04T05:06:07"
ELSEWHEN = "2020-01-01T00:00:00"


def reading(mode: str, server: str = "10.0.0.1", time: str = WANTED) -> str:
    return f'<TimeReferenceConfiguration Mode="{mode}" NtpServer="{server}" DateTime="{time}"/>'


def silent_card(*readings: str) -> Respond:
    """Does not answer when it is told something; what it says when it is asked, one after the other."""
    left = list(readings)

    def respond(request: Message) -> bytes | None:
        if request.header.command == Command.TIME_SET or not left:
            return None
        return answer(request, text_payload(left.pop(0)), Format.SECTION_8)

    return respond


def test_what_was_done_without_an_answer_in_time_is_done(ctl: Ctl) -> None:
    with FakeTcpCard(silent_card(reading("Manual"), reading("Ntp", "10.0.0.9"))) as card:
        told = ctl.json("--timeout", "2", "time", "set", "--ntp", "10.0.0.9", card.address)
    assert (told.code, told.result["mode"], told.result["server"]) == (0, "Ntp", "10.0.0.9")
    assert "did not answer in time, but has what it was told" in told.result["hint"]


def test_what_was_not_done_without_an_answer_is_said(ctl: Ctl) -> None:
    with FakeTcpCard(silent_card(reading("Manual"), reading("Manual"))) as card:
        told = ctl.json("--timeout", "2", "time", "set", "--ntp", "10.0.0.9", card.address)
    assert (told.code, told.result["category"], told.result["mode"]) == (7, "not-taken", "Manual")


def test_what_cannot_be_read_back_is_not_known(ctl: Ctl) -> None:
    with FakeTcpCard(silent_card(reading("Manual"))) as card:
        told = ctl.json("--timeout", "2", "time", "set", "--ntp", "10.0.0.9", card.address)
    assert (told.code, told.result["category"]) == (5, "timeout")
    assert "what the card has now is not known" in told.result["hint"]


def test_a_refusal_that_changed_the_mode_is_told(ctl: Ctl, scratch: Card) -> None:
    """The kernel lets no simulated card move the clock; by then the time service is off."""
    assert ctl("time", "set", "--ntp", "10.0.0.9", "rack1").code == 0
    told = ctl.json("time", "set", "--manual", "now", "rack1")
    assert (told.code, told.result["mode"]) == (3, "Manual")
    assert 'read back, it is now in mode Manual with the server "10.0.0.9"' in told.result["hint"]


def test_a_refusal_that_changed_nothing_is_told(ctl: Ctl, scratch: Card) -> None:
    told = ctl.json("time", "set", "--manual", "now", "rack1")
    assert told.code == 3
    assert "read back, it still is in mode Manual" in told.result["hint"]


def refusing_card(*times: str) -> Respond:
    """Refuses to be told something; what its clock shows when it is asked, one after the other."""
    left = [reading("Manual", time=time) for time in times]

    def respond(request: Message) -> bytes | None:
        if request.header.command == Command.TIME_SET:
            return answer(request, status=2)
        return answer(request, text_payload(left.pop(0)), Format.SECTION_8)

    return respond


@pytest.mark.parametrize(
    ("before", "afterwards", "changed", "said"),
    [
        (ELSEWHEN, WANTED, True, ", but its clock was set"),
        (ELSEWHEN, ELSEWHEN, False, '"10.0.0.1"'),
        (WANTED, WANTED, None, "; whether its clock was set is not known"),
        (ELSEWHEN, "2023-01-01T00:00:00", None, "; whether its clock was set is not known"),
    ],
)
def test_a_refusal_after_the_clock_was_set_is_told(
    ctl: Ctl, before: str, afterwards: str, changed: bool | None, said: str
) -> None:
    with FakeTcpCard(refusing_card(before, afterwards)) as card:
        told = ctl.json("time", "set", "--manual", f"{WANTED}Z", card.address)
    assert (told.code, told.result["changed"]) == (3, changed)
    assert told.result["hint"].endswith(said)


@pytest.mark.parametrize("words", [("--manual", WANTED), ("--ntp", "10.0.0.9")])
def test_what_a_card_says_adds_no_line(ctl: Ctl, words: tuple[str, str]) -> None:
    server = "10.0.0.1\nerror: all cards are lost"
    with FakeTcpCard(silent_card(reading("Ntp", server), reading("Ntp", server))) as card:
        told = ctl("--timeout", "2", "time", "set", *words, card.address)
    assert "all cards are lost" in told.err
    assert not any(line.startswith("error: all") for line in told.err.splitlines())


@pytest.fixture
def stock(scratch: Card) -> Card:
    """A card with the servers of its platform."""
    settings = scratch.inside.read("/etc/config/system")
    servers = "".join(f"\tlist server '{server}'\n" for server in STOCK)
    assert "\toption server '10.0.0.1'\n" in settings
    scratch.inside.write("/etc/config/system", settings.replace("\toption server '10.0.0.1'\n", servers))
    return scratch


def test_a_list_of_servers_is_sent_back_as_it_came(ctl: Ctl, stock: Card) -> None:
    mark = stock.records.calls_mark()
    assert ctl("time", "set", "--manual", "now", "rack1").code == 3  # as above
    assert [call for call in stock.records.calls("uci", since=mark) if "set" in call] == []
    assert ctl.json("time", "get", "rack1").result["server"] == " ".join(STOCK)


def test_the_servers_that_go_are_named(ctl: Ctl, stock: Card) -> None:
    told = ctl("time", "set", "--ntp", STOCK[1], "rack1")
    assert told.code == 0
    assert f"goes from the card's NTP servers: {STOCK[0]}, {STOCK[2]}, {STOCK[3]}\n" in told.err


def test_an_option_is_no_server(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("time", "set", "--ntp", "--server", "10.0.0.9", "rack1").code == 2
