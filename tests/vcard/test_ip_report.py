# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card's addresses as it reports them over both devices."""

import pytest
from asking import ask_udp
from card import ADDRESSES, VirtualCard
from support.documents import interface, ip_configuration
from support.peers import BROADCAST
from wire import Command, Status


@pytest.mark.parametrize("device", ADDRESSES)
def test_both_interfaces_are_reported_over_both_devices(card: VirtualCard, device: str) -> None:
    answer = ask_udp(device, Command.IP_GET, ip_configuration())
    assert answer.header.status == Status.SUCCESS
    assert answer.text == (
        '<IpConfiguration From="card1" To="mgmt">'
        '<Interface Name="VemkEth1" Mode="Static" Address="10.0.0.10" Netmask="255.255.255.0"/>'
        '<Interface Name="VemkEth2" Mode="Static" Address="10.0.1.10" Netmask="255.255.255.0"/>'
        "</IpConfiguration>"
    )


@pytest.mark.parametrize("device", ADDRESSES)
def test_a_request_to_the_address_of_the_card_is_answered_by_broadcast(card: VirtualCard, device: str) -> None:
    answer = ask_udp(device, Command.IP_GET, ip_configuration(), to=ADDRESSES[device])
    assert answer.destination == BROADCAST


def test_disabling_both_interfaces_is_refused(card: VirtualCard) -> None:
    none_left = ip_configuration(interface("VemkEth1", "Disabled"), interface("VemkEth2", "Disabled"))
    assert ask_udp("eth1", Command.IP_SET, none_left).header.status == Status.FAILURE
    assert card.run("uci changes") == ""
