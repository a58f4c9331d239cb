# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card's addresses changed for real, and kept."""

import pytest
from asking import ask, ask_udp, connect, udp_peer
from card import ADDRESSES, VirtualCard
from support.documents import interface, ip_configuration
from support.peers import BROADCAST
from wire import Command, Status, request

NAMES = {"eth0": "VemkEth1", "eth1": "VemkEth2"}
NEW_ADDRESSES = {"eth0": "10.0.0.99", "eth1": "10.0.1.99"}
NETMASK = "255.255.255.0"


def set_interface(element: str) -> None:
    assert ask_udp("eth0", Command.IP_SET, ip_configuration(element)).header.status == Status.SUCCESS


def move(card: VirtualCard, device: str) -> str:
    """Gives the card another address on a device and waits until the device has it."""
    address = NEW_ADDRESSES[device]
    set_interface(interface(NAMES[device], "Static", address, NETMASK))
    card.wait_for(lambda: f"inet addr:{address} " in card.run(f"ifconfig {device}"), f"{device} has {address}")
    return address


@pytest.mark.parametrize("device", ADDRESSES)
def test_a_new_address_moves_the_card(fresh_card: VirtualCard, device: str) -> None:
    address = move(fresh_card, device)
    assert ask(Command.VERSIONS, address=address).header.status == Status.SUCCESS


def test_a_moved_card_does_not_answer_at_its_old_address(fresh_card: VirtualCard) -> None:
    move(fresh_card, "eth0")
    with pytest.raises(OSError):
        connect(ADDRESSES["eth0"], patience=0)


def test_the_card_has_the_new_address_after_the_power_was_cut(fresh_card: VirtualCard) -> None:
    address = move(fresh_card, "eth1")
    fresh_card.run("sync")
    fresh_card.restart()
    assert ask(Command.VERSIONS, address=address).header.status == Status.SUCCESS


def test_a_disabled_interface_has_no_address(fresh_card: VirtualCard) -> None:
    set_interface(interface("VemkEth2", "Disabled"))
    fresh_card.wait_for(lambda: "inet addr" not in fresh_card.run("ifconfig eth1"), "eth1 has no address")


def test_a_disabled_interface_hears_broadcasts_and_answers_from_the_other_one_s_address(fresh_card: VirtualCard) -> None:
    set_interface(interface("VemkEth2", "Disabled"))
    ask(Command.VERSIONS)  # which is answered when the network has been restarted
    fresh_card.wait_for(lambda: " UP " in fresh_card.run("ifconfig eth1"), "eth1 is up again")
    with udp_peer("eth1") as peer:
        peer.send(request(Command.IP_GET, ip_configuration()), to=BROADCAST)
        _, sender = peer.socket.recvfrom(65536)
    assert sender[0] == ADDRESSES["eth0"]


def test_a_gateway_becomes_the_default_route(fresh_card: VirtualCard) -> None:
    set_interface(interface("VemkEth1", "Static", ADDRESSES["eth0"], NETMASK, "10.0.0.1"))
    fresh_card.wait_for(lambda: "0.0.0.0         10.0.0.1 " in fresh_card.run("route -n"), "the default route")
