# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A slow card, whose address a fast one has, too, is not taken for it."""

import pytest
from support.ctl import Answer, Ctl
from support.slow import napping
from support.snapshot import Snapshot
from tarvelsim import Card

pytestmark = pytest.mark.usefixtures("bystanders")


def answer_of_slow(ctl: Ctl, rack: list[Card], *words: str) -> Answer:
    """What becomes of rack1, which naps from the first question on; rack2 tells when that came."""
    mark = rack[1].records.log_mark()
    with napping(rack[0]) as woken:
        running = ctl.start("-o", "json", "-i", "lan0", "--timeout", "60", *words, "rack1")
        rack[1].records.wait_log('Message is for "rack1"', timeout=60, since=mark)
        woken.set()
        out, err = running.communicate(timeout=240)
    return Answer(running.returncode, out, err)


@pytest.mark.parametrize("words", [("time", "set", "--ntp", "10.0.0.99"), ("firmware", "upgrade", "FILE")])
def test_nothing_is_changed_at_an_address_that_a_fast_card_has_too(
    ctl: Ctl, rack: list[Card], doubled: str, firmware: str, words: tuple[str, ...]
) -> None:
    before = Snapshot(rack)
    answer = answer_of_slow(ctl, rack, *(firmware if word == "FILE" else word for word in words))
    assert (answer.code, answer.result["category"], answer.result["checked"]) == (11, "ambiguous", False)
    assert f"two cards share the address {doubled}" in answer.result["hint"]
    assert Snapshot(rack) == before


def test_the_address_of_a_slow_card_alone_was_checked(ctl: Ctl, rack: list[Card], scratch: Card) -> None:
    answer = answer_of_slow(ctl, rack, "time", "set", "--ntp", "10.0.0.99")
    assert (answer.code, answer.result["checked"]) == (0, True)


def test_its_present_address_is_not_a_slow_cards_own_if_a_fast_one_has_it_too(
    ctl: Ctl, rack: list[Card], doubled: str
) -> None:
    before = Snapshot(rack)
    answer = answer_of_slow(ctl, rack, "ip", "set", "--if", "VemkEth1", "--static", f"{doubled}/24,10.0.0.1")
    assert (answer.code, answer.result["address_state"]) == (2, "in use")
    assert f"another card has {doubled} already" in answer.result["hint"]
    assert Snapshot(rack) == before
