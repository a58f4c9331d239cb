# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Clients that are gone without a word hold the only connection for a minute and a half."""

from collections.abc import Callable, Iterator

import pytest
from support.descriptors import shorten_limit
from support.peers import TcpPeer
from tarvelsim import Card
from wire import Command, Status, request

GIVEN_UP = "recv() failed: "  # "Connection timed out", or "No route to host" once the card has asked for the address


@pytest.fixture
def cable(card: Card) -> Iterator[Callable[[bool], None]]:
    """Pulls the cable of eth0 or plugs it in; it is in at the end."""
    yield lambda plugged: card.set_link("eth0", plugged)
    card.set_link("eth0", True)


def pid_of(card: Card) -> int:
    assert card.daemon.pid is not None
    return card.daemon.pid


def vanish_with_a_reply_on_its_way(card: Card, peer: TcpPeer, cable: Callable[[bool], None]) -> None:
    """The card has read the request when the cable goes, and replies to nobody."""
    card.inside.hold("sh")
    mark = card.records.commands_mark()
    peer.send(request(Command.TIME_GET))
    card.records.wait_command("uci -q get system.ntp.server", since=mark)
    cable(False)
    card.inside.release()


def test_client_that_vanishes_with_a_reply_on_its_way_is_given_up(
    card: Card, connect: Callable[[], TcpPeer], cable: Callable[[bool], None]
) -> None:
    peer = connect()
    peer.ask(request(2))
    shorten_limit(pid_of(card))
    mark = card.records.log_mark()
    vanish_with_a_reply_on_its_way(card, peer, cable)
    card.records.wait_log(GIVEN_UP, timeout=30, since=mark, level="warning")
    cable(True)
    assert connect().ask(request(2)).header.status == Status.UNKNOWN_COMMAND


@pytest.mark.long
def test_client_that_vanishes_is_given_up_by_the_limit_that_the_daemon_sets(
    card: Card, connect: Callable[[], TcpPeer], cable: Callable[[bool], None]
) -> None:
    mark = card.records.log_mark()
    vanish_with_a_reply_on_its_way(card, connect(), cable)
    card.records.wait_log(GIVEN_UP, timeout=300, since=mark, level="warning")  # without the limit it takes 900 s and more
    cable(True)
    assert connect().ask(request(2)).header.status == Status.UNKNOWN_COMMAND
