# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Many names, and some of them nobody's."""

import signal
import subprocess
from collections import Counter

import pytest
from support.ctl import Ctl, interrupt
from support.fake_card import FakeUdpCard, answer
from support.stopping import stopped
from tarvelsim import Card
from wire import Message, text_payload
from wire.numbers import Format

HERE = "here"


def answers_as_here(request: Message) -> list[bytes]:
    if f'To="{HERE}"'.encode() not in request.payload:
        return []
    text = (
        f'<IpConfiguration From="{HERE}" To="tarvelctl"><Interface Name="VemkEth1" Mode="Dhcp"/>'
        '<Interface Name="VemkEth2" Mode="Disabled"/></IpConfiguration>'
    )
    return [answer(request, text_payload(text), Format.SECTION_8)]


@pytest.mark.parametrize("command", ["versions", "ip get"])
def test_names_of_nobody_take_no_place_of_others(ctl: Ctl, rack: list[Card], command: str) -> None:
    running = ctl.start("-o", "jsonl", "--timeout", "60", "--parallel", "1", *command.split(), "nobody[1-3]", "rack1")
    assert running.stdout
    first = running.stdout.readline()  # while the others still wait
    assert '"target":"rack1"' in first
    assert '"ok":true' in first
    interrupt(running)


def test_names_of_nobody_are_not_found(ctl: Ctl) -> None:
    answers = ctl.json("--timeout", "0.5", "versions", "nobody[1-3]")
    assert answers.code == 5
    assert [result["category"] for result in answers.results] == ["not-found"] * 3


def test_only_names_that_were_not_heard_are_asked_again(ctl: Ctl) -> None:
    with FakeUdpCard(answers_as_here) as card:
        ctl("-i", "lan0", "--timeout", "6", "--retries", "2", "ip", "get", HERE, "absent")
    asked = Counter(request.payload for request in card.requests)
    assert sorted(asked.values()) == [1, 3]


class LateCard:
    """Answers the first request only after the second."""

    def __init__(self) -> None:
        self.kept: list[Message] = []

    def __call__(self, request: Message) -> list[bytes]:
        self.kept.append(request)
        if len(self.kept) == 1:
            return []
        late = self.kept if len(self.kept) == 2 else [request]
        return [reply for one in late for reply in answers_as_here(one)]


def test_a_card_that_answers_two_requests_is_one_card(ctl: Ctl) -> None:
    with FakeUdpCard(LateCard()) as card:
        answer = ctl.json("-i", "lan0", "--timeout", "10", "--retries", "1", "--dry-run", "reboot", HERE)
    assert len(card.requests) >= 2
    assert (answer.code, answer.result["category"]) == (0, None)


def test_every_name_of_a_long_range_is_heard(ctl: Ctl, rack: list[Card]) -> None:
    """More names than leave in one burst; a card reads every one of them, and has the time for it."""
    results = ctl.json("--timeout", "10", "versions", "nobody[1-120]", "rack[1-8]").results
    assert [result["ok"] for result in results] == [False] * 120 + [True] * 8


def test_what_many_names_cost_the_cards_is_told(ctl: Ctl) -> None:
    assert "65 names are asked for" in ctl("--timeout", "0.3", "versions", "nobody[1-65]").err
    assert "names are asked for" not in ctl("--timeout", "0.3", "versions", "nobody[1-64]").err


def test_a_stopped_card_is_not_heard_instead_of_not_found(ctl: Ctl, scratch: Card) -> None:
    address = scratch.address("eth0") or ""
    assert ctl("-i", "lan0", "versions", "rack1").code == 0
    scratch.daemon.kill(signal.SIGSTOP)
    try:
        result = ctl.json("-i", "lan0", "--timeout", "0.5", "versions", "rack1").result
    finally:
        scratch.daemon.kill(signal.SIGCONT)
    assert (result["code"], result["category"]) == (5, "not-heard")
    assert result["last_address"] == address
    assert result["last_heard"].endswith(" ago")
    assert result["there_now"] == "accepts connections and does not answer"


def test_a_stopped_card_is_not_heard_before_a_change_either(ctl: Ctl, scratch: Card) -> None:
    address = scratch.address("eth0") or ""
    assert ctl("-i", "lan0", "versions", "rack1").code == 0
    scratch.daemon.kill(signal.SIGSTOP)
    try:
        result = ctl.json("-i", "lan0", "--timeout", "0.5", "time", "set", "--ntp", "10.0.0.9", "rack1").result
    finally:
        scratch.daemon.kill(signal.SIGCONT)
    assert (result["code"], result["category"], result["changed"]) == (5, "not-heard", False)
    assert result["last_address"] == address


def test_what_was_heard_before_is_never_an_address(ctl: Ctl, rack: list[Card]) -> None:
    """Another card answers there by now, and is not asked in the old one's place."""
    address = rack[0].address("eth0")
    ctl.remember("heard", f"moved {address} 1000000000\n")
    result = ctl.json("-i", "lan0", "versions", "moved").result
    assert result["category"] == "not-heard"
    assert result["last_address"] == address
    assert result["there_now"] == "answers as a card, but not by this name"
    assert "components" not in result


def test_a_card_that_was_moved_is_remembered_where_it_is(ctl: Ctl, scratch: Card) -> None:
    assert ctl("-i", "lan0", "ip", "set", "--if", "VemkEth1", "--static", "10.0.0.88/24", "rack1").code == 0
    with stopped(scratch):
        result = ctl.json("-i", "lan0", "--timeout", "0.5", "versions", "rack1").result
    assert (result["category"], result["last_address"]) == ("not-heard", "10.0.0.88")


@pytest.mark.usefixtures("deaf_interface")
def test_of_an_address_where_nobody_was_asked_only_what_was_seen_is_told(ctl: Ctl, rack: list[Card]) -> None:
    ctl.remember("heard", f"moved {rack[0].address('eth1')} 1000000000 lan1\n")
    result = ctl.json("--timeout", "2", "versions", "moved").result
    assert result["there_now"] == "answers as a card; the name could not be asked for there"


def test_an_address_is_looked_at_only_where_it_was_heard(ctl: Ctl, rack: list[Card]) -> None:
    ctl.remember("heard", f"moved {rack[0].address('eth0')} 1000000000 lan1\n")
    result = ctl.json("--timeout", "0.5", "versions", "moved").result
    assert result["there_now"] == "was not looked at: it is in no network of lan1 now"


def test_where_a_card_was_heard_at_last_is_remembered_and_not_only_first(ctl: Ctl, scratch: Card) -> None:
    """It answers on the second network from its address on the first, and there its first answer is lost."""
    address = scratch.address("eth0") or ""
    scratch.inside.run(["ip", "address", "flush", "dev", "eth1"])
    subprocess.run(["nft", "add", "table", "ip", "lossy"], check=True)
    try:
        subprocess.run(["nft", "add chain ip lossy i { type filter hook input priority 0; }"], check=True)
        rule = "add rule ip lossy i iifname lan0 udp sport 50003 numgen inc mod 1000 == 0 drop"
        subprocess.run(["nft", rule], check=True)
        assert ctl("versions", "rack1").code == 0
    finally:
        subprocess.run(["nft", "delete", "table", "ip", "lossy"], check=True)
    assert (ctl.state / "heard").read_text().startswith(f"rack1 {address} ")


def test_many_silent_cards_are_told_like_many_unknown_ones(ctl: Ctl) -> None:
    """Each was at an address of its own."""
    ctl.remember("heard", "".join(f"gone{number} 192.0.2.{number} 1000000000\n" for number in range(1, 101)))
    words = ("--timeout", "1", "versions")
    known = ctl(*words, "gone[1-100]").err.splitlines()
    unknown = ctl(*words, "never[1-100]").err.splitlines()
    assert len(known) == len(unknown)
    folded = ctl.json("--fold", *words, "gone[1-100]").results
    assert [(one["target"], one["last_address"]) for one in folded] == [("gone[1-100]", None)]
