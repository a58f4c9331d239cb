# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A versions report holds 2047 characters; what does not fit is left out."""

from xml.etree import ElementTree

import pytest
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request

LIMIT = 2047
LINE_WITHOUT_VERSION = len('\t<Component Id="zz" Version=""/>\n')


def grow(card: Card, tcp: TcpPeer, size: int) -> None:
    """Adds components, the last one named "zz", so that a complete report has this many characters."""
    for number in range(8):
        card.inside.write(f"/etc/pnr/part{number}", "p" * 100)
    now = len(tcp.ask(request(Command.VERSIONS)).text)
    card.inside.write("/etc/pnr/zz", "z" * (size - now - LINE_WITHOUT_VERSION))


def test_report_of_the_limit_is_complete(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    grow(scratch_card, tcp, LIMIT)
    text = tcp.ask(request(Command.VERSIONS)).text
    assert len(text) == LIMIT
    assert '"zz"' in text
    assert not any(line.startswith("warning") for line in watch.log())


def test_component_that_passes_the_limit_is_left_out_with_one_warning(
    scratch_card: Card, watch: Watch, tcp: TcpPeer
) -> None:
    grow(scratch_card, tcp, LIMIT + 1)
    assert '"zz"' not in tcp.ask(request(Command.VERSIONS)).text
    warnings = [line for line in watch.log() if line.startswith("warning")]
    assert warnings == ["warning Versions report is full: zz and all components after it are left out"]


def test_small_components_after_one_that_does_not_fit_are_left_out_too(
    scratch_card: Card, watch: Watch, tcp: TcpPeer
) -> None:
    grow(scratch_card, tcp, LIMIT + 1)
    scratch_card.inside.write("/etc/pnr/zzz", "z")
    assert '"zzz"' not in tcp.ask(request(Command.VERSIONS)).text
    assert sum(line.startswith("warning") for line in watch.log()) == 1


@pytest.mark.parametrize("excess", [1, 2, 400, 900])
def test_cut_report_is_well_formed_and_its_lengths_are_true(scratch_card: Card, tcp: TcpPeer, excess: int) -> None:
    grow(scratch_card, tcp, LIMIT + excess)
    reply = tcp.ask(request(Command.VERSIONS))
    assert reply.header.status == Status.SUCCESS
    assert len(ElementTree.fromstring(reply.text)) == 14  # checks the lengths, too
    assert tcp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND  # the stream is in step
