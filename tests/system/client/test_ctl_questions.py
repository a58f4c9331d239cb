# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What may happen while a person is asked: the answer is about what was shown, and about the cards of that moment."""

import time
from contextlib import ExitStack

import pytest
from support.ctl import Ctl
from support.snapshot import Snapshot
from support.stopping import stopped
from support.terminal import Session, on_terminal
from tarvelsim import Card

pytestmark = pytest.mark.usefixtures("bystanders")

SPARE = "10.0.0.88"
LONGEST = 5.0  # seconds: what is older is found out again before a change


@pytest.fixture
def one_way(scratch: Card) -> Card:
    """A card whose present settings cannot be given back to it, so that people are asked first."""
    scratch.inside.run(["uci", "delete", "network.lanvemt2eth1.netmask"])
    return scratch


def expect_refused(session: Session, why: str) -> None:
    assert session.code == 2
    assert why in " ".join(session.shown.split())


def test_an_address_that_somebody_takes_while_a_person_thinks_is_not_given(
    ctl: Ctl, one_way: Card, scratches: list[Card]
) -> None:
    before = Snapshot([one_way])
    other = scratches[1].inside
    words = ("ip", "set", "--if", "VemkEth1", "--static", f"{SPARE}/24", "rack1")
    take = ["ip", "address", "add", f"{SPARE}/24", "dev", "eth0"]
    session = on_terminal(ctl, *words, says="y\n", meanwhile=lambda: other.run(take))
    expect_refused(session, f"has {SPARE} already")
    assert Snapshot([one_way]) == before


def test_settings_that_change_while_a_person_thinks_are_not_overwritten(ctl: Ctl, one_way: Card) -> None:
    words = ("ip", "set", "--if", "VemkEth1", "--dhcp", "rack1")
    change = ["uci", "set", "network.lanvemt2eth2.gateway=10.0.1.254"]
    session = on_terminal(ctl, *words, says="y\n", meanwhile=lambda: one_way.inside.run(change))
    expect_refused(session, "have changed while you were asked")
    assert one_way.inside.uci("get", "network.lanvemt2eth1.proto") == "static"


def test_what_was_agreed_to_is_done(ctl: Ctl, one_way: Card) -> None:
    session = on_terminal(ctl, "ip", "set", "--if", "VemkEth1", "--dhcp", "rack1", says="y\n", meanwhile=lambda: None)
    assert "Change it all the same? [y/N]" in session.shown
    assert one_way.inside.uci("get", "network.lanvemt2eth1.proto") == "dhcp"


def test_a_second_card_that_comes_while_a_person_thinks_is_seen(
    ctl: Ctl, rack: list[Card], scratches: list[Card], twin: Card, firmware: str
) -> None:
    before = Snapshot([rack[0], twin])
    with ExitStack() as away:
        away.enter_context(stopped(twin))

        def come_late() -> None:
            away.close()
            time.sleep(LONGEST)

        session = on_terminal(ctl, "firmware", "upgrade", firmware, "rack[1-2]", says="y\n", meanwhile=come_late)
    assert "two cards have this name" in " ".join(session.shown.split())
    assert Snapshot([rack[0], twin]) == before
