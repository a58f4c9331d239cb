# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Datagrams that are meant to cause more of them, or that anybody may send in another's place."""

from collections.abc import Iterator

import pytest
from support.daemon import COMMAND, IS_HARDENED
from support.documents import interface, ip_configuration, reboot_card
from support.peers import BROADCAST, UdpPeer
from support.watch import Watch
from tarvelsim import Card, Lan
from wire import Command, Status, request
from wire.numbers import PORT


@pytest.fixture
def other_card(lan: Lan, addresses: dict[str, str]) -> Iterator[UdpPeer]:
    """Somebody who sends from the port of a card."""
    peer = UdpPeer("lan0", lan.address("lan0"), addresses["eth0"], PORT)
    yield peer
    peer.close()


def answers(peer: UdpPeer) -> int:
    """How many have come so far, among all that is broadcast to a card's port."""
    number = 0
    while peer.has_datagram():
        number += peer.receive().header.command >= 0x8000
    return number


@pytest.mark.parametrize(
    "data", [request(1, service=3, status=5), request(0x42), request(Command.IP_GET, ip_configuration())]
)
def test_datagram_from_the_port_of_a_card(card: Card, watch: Watch, other_card: UdpPeer, data: bytes) -> None:
    other_card.send(data)
    assert watch.logged("info Nothing is sent to port 50003, which is a card's") == IS_HARDENED
    assert answers(other_card) == (0 if IS_HARDENED else 1)


def test_one_datagram_to_all_cards(lan: Lan, card: Card, udp: UdpPeer) -> None:
    with lan.card("other", command=COMMAND):
        udp.send(request(0x42), to=BROADCAST)
        assert [udp.receive().header.command for _ in range(2)] == [0x8042, 0x8042]


def test_answer_for_everybody_at_a_port_that_the_sender_chooses(card: Card, udp: UdpPeer) -> None:
    answer = udp.ask(request(Command.IP_GET, ip_configuration()))
    assert (answer.header.status, answer.destination) == (Status.SUCCESS, BROADCAST)
    assert len(answer.text) > len(ip_configuration())


def test_reboot_by_a_single_datagram(scratch_card: Card, watch: Watch, udp: UdpPeer) -> None:
    scratch_card.inside.hold("reboot")
    assert udp.ask(request(Command.REBOOT, reboot_card())).header.status == Status.SUCCESS
    assert watch.commands()[-1].endswith("reboot -d 2 &")


def test_request_that_somebody_has_recorded_and_sends_again(scratch_card: Card, watch: Watch, udp: UdpPeer) -> None:
    """For the other interface, so that the card can still be asked."""
    recorded = request(Command.IP_SET, ip_configuration(interface("VemkEth2", "Dhcp")), sequence=7)
    for _ in range(2):
        mark = scratch_card.records.commands_mark()
        assert udp.ask(recorded).header.status == Status.SUCCESS
        scratch_card.records.wait_command("/etc/init.d/network restart", since=mark)
