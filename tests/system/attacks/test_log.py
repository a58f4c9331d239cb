# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a client tries to have the card's log say."""

from support.daemon import IS_HARDENED
from support.documents import ip_configuration, time_reference
from support.peers import TcpPeer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request


def test_line_end_in_the_name_of_the_addressed_card(card: Card, watch: Watch, udp: UdpPeer) -> None:
    assert udp.is_ignored(request(Command.IP_GET, ip_configuration(to="x&#10;&lt;27>y")))
    logged = "x?<27>y" if IS_HARDENED else "x\n<27>y"
    assert f'info Message is for "{logged}" not for me "card1", drop it' in watch.log()


def test_escape_sequence_of_a_terminal_in_a_mode(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert tcp.ask(request(Command.TIME_SET, time_reference("\u009b2J"))).header.status == Status.FAILURE
    logged = "?2J" if IS_HARDENED else "\u009b2J"
    assert f'warning Unsupported time reference mode "{logged}"' in watch.log()


def test_letters_of_a_format_in_the_name_of_the_addressed_card(card: Card, watch: Watch, udp: UdpPeer) -> None:
    assert udp.is_ignored(request(Command.IP_GET, ip_configuration(to="%s%s%n%n%2147483647d")))
    assert 'info Message is for "%s%s%n%n%2147483647d" not for me "card1", drop it' in watch.log()
