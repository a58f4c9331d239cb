# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A slow card: its daemon stands still again and again, and everything still comes to an end."""

import signal
from collections.abc import Iterator
from contextlib import closing
from pathlib import Path

import pytest
from support.daemon import COMMAND
from support.peers import TcpPeer
from tarvelsim import Card, Lan
from tarvelsim.waiting import wait_for
from wire import Command, Status, request

FOR_EVER = 3600.0
PATIENCE = 60


def state_of(card: Card) -> str:
    status = Path(f"/proc/{card.daemon.pid}/status").read_text(encoding="ascii")
    return status.split("State:")[1].split()[0]


def wait_state(card: Card, stands: bool) -> None:
    wait_for(lambda: (state_of(card) == "T") == stands, PATIENCE, lambda: f"it does not {'stand' if stands else 'run'}")


@pytest.fixture
def slow_card(lan: Lan) -> Iterator[Card]:
    with lan.card("slow", command=COMMAND, standstill=1.5) as card:
        yield card


@pytest.fixture
def still_card(lan: Lan) -> Iterator[Card]:
    """It does not go on by itself any more."""
    card = lan.card("still", command=COMMAND, standstill=FOR_EVER)
    try:
        card.start(wait=False)
        wait_state(card, stands=True)
        yield card
    finally:
        card.stop()


def test_daemon_stands_still_and_goes_on_and_stands_still(slow_card: Card) -> None:
    for stands in (True, False, True):
        wait_state(slow_card, stands)


def test_slow_card_answers_all_the_same(slow_card: Card) -> None:
    wait_state(slow_card, stands=True)
    with closing(TcpPeer(slow_card.address("eth0") or "")) as peer:
        assert peer.ask(request(Command.VERSIONS)).header.status == Status.SUCCESS


def test_a_daemon_that_stands_still_is_stopped_without_force(still_card: Card) -> None:
    still_card.daemon.stop()
    (end,) = still_card.daemon.exits
    assert end.signal != signal.SIGKILL


def test_other_cards_run_all_the_time(card: Card, still_card: Card) -> None:
    assert state_of(card) != "T"
