# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card's network is as strict, and as silent about it, as the platform's."""

import shlex

import pytest
from support.documents import ip_configuration
from support.peers import BROADCAST, PATIENCE, UdpPeer
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, request

SECTION = "network.lanvemt2eth2"
RESTART = ["/etc/init.d/network", "restart"]


def configure(card: Card, **options: str) -> None:
    """Restarts the network with these options of the second interface, committed or not: both count."""
    for option, value in options.items():
        card.inside.uci("set", f"{SECTION}.{option}={value}")
    mark = card.network.mark()
    card.inside.run(RESTART)
    card.network.wait(mark)


def default_routes(card: Card) -> list[str]:
    """As "gateway device", with the metric if it is not 0."""
    routes = card.inside.run(["ip", "-4", "route", "show", "default"]).stdout.splitlines()
    return [route.removeprefix("default via ").replace("dev ", "").strip() for route in routes]


def errors(card: Card) -> list[str]:
    return card.network.errors("lanvemt2eth2")


@pytest.mark.parametrize(
    "address", ["10.0.1.0x0b", "10.11", "0x0a00010b", "10.0.1.011", "10.0.1.256", "x", "10.0.1.11/33", "1.2.3.4 x"]
)
def test_address_in_any_but_the_usual_form_leaves_the_interface_without_one(scratch_card: Card, address: str) -> None:
    configure(scratch_card, ipaddr=address)
    assert errors(scratch_card) == ["INVALID_ADDRESS"]
    assert scratch_card.addresses("eth1") == []
    assert scratch_card.addresses("eth0") == ["10.0.0.11/24"]


@pytest.mark.parametrize("gateway", ["10.0.1.0x01", "10.1", "x"])
def test_gateway_in_any_but_the_usual_form_costs_the_address(scratch_card: Card, gateway: str) -> None:
    configure(scratch_card, gateway=gateway)
    assert errors(scratch_card) == ["INVALID_GATEWAY"]
    assert scratch_card.addresses("eth1") == []


@pytest.mark.parametrize(
    ("netmask", "length"),
    [("255.255.0.0", 16), ("255.0.255.0", 8), ("24", 24), ("0x18", 24), ("030", 24), ("0", 0),
     ("255.255.255.255", 32), ("255.255.65280", 24), ("0xff.0xff.0.0", 16)],
)
def test_netmask_counts_as_far_as_its_first_zero_and_may_be_a_number_of_bits(
    scratch_card: Card, netmask: str, length: int
) -> None:
    configure(scratch_card, netmask=netmask)
    assert scratch_card.addresses("eth1") == [f"10.0.1.11/{length}"]


@pytest.mark.parametrize("netmask", ["0xffffff00", "33", "x", "255.x", "2_4", "08", "0b11000"])
def test_netmask_that_is_none_costs_the_address(scratch_card: Card, netmask: str) -> None:
    configure(scratch_card, netmask=netmask)
    assert errors(scratch_card) == ["INVALID_NETMASK"]
    assert scratch_card.addresses("eth1") == []


def test_address_without_a_netmask_is_a_network_of_its_own(scratch_card: Card) -> None:
    scratch_card.inside.uci("delete", f"{SECTION}.netmask")
    configure(scratch_card)
    assert scratch_card.addresses("eth1") == ["10.0.1.11/32"]


def test_address_may_carry_the_length_of_its_prefix(scratch_card: Card) -> None:
    configure(scratch_card, ipaddr="10.0.1.77/28")
    assert scratch_card.addresses("eth1") == ["10.0.1.77/28"]


def test_interface_may_have_a_list_of_addresses(scratch_card: Card) -> None:
    network = scratch_card.inside.read("/etc/config/network")
    items = "\tlist ipaddr '10.0.1.77'\n\tlist ipaddr '10.0.2.77/16'\n"
    scratch_card.inside.write("/etc/config/network", network.replace("\toption ipaddr '10.0.1.11'\n", items))
    configure(scratch_card)
    assert scratch_card.addresses("eth1") == ["10.0.1.77/24", "10.0.2.77/16"]


@pytest.mark.parametrize("gateway", ["10.9.9.9", "10.0.0.1"])
def test_gateway_outside_of_the_interface_s_subnet_is_silently_no_route(scratch_card: Card, gateway: str) -> None:
    configure(scratch_card, gateway=gateway)
    assert default_routes(scratch_card) == []
    assert errors(scratch_card) == []
    assert scratch_card.addresses("eth1") == ["10.0.1.11/24"]


def test_gateway_of_the_later_interface_wins(scratch_card: Card) -> None:
    scratch_card.inside.uci("set", "network.lanvemt2eth1.gateway=10.0.0.1")
    configure(scratch_card)
    assert default_routes(scratch_card) == ["10.0.0.1 eth0"]
    configure(scratch_card, gateway="10.0.1.1")
    assert default_routes(scratch_card) == ["10.0.1.1 eth1"]


def test_settings_that_are_only_staged_count(scratch_card: Card) -> None:
    configure(scratch_card, ipaddr="10.0.1.77")
    assert scratch_card.inside.uci("changes", "network") != ""
    assert scratch_card.addresses("eth1") == ["10.0.1.77/24"]


def test_interface_of_no_protocol_is_up_without_an_address(scratch_card: Card) -> None:
    configure(scratch_card, proto="none")
    assert scratch_card.addresses("eth1") == []
    assert "UP" in scratch_card.inside.run(["ip", "link", "show", "eth1"]).stdout.partition(">")[0].split(",")


def test_broadcast_to_an_interface_of_no_protocol_is_answered_from_the_other_one_s_address(
    scratch_card: Card, udp1: UdpPeer
) -> None:
    configure(scratch_card, proto="none")
    answer = udp1.ask_until_answered(request(Command.IP_GET, ip_configuration()), to=BROADCAST)
    assert answer.sender == "10.0.0.11"
    assert 'Name="VemkEth2" Mode="Disabled"' in answer.text


def test_lease_comes_after_the_restart_and_its_router_is_the_default_route(scratch_card: Card) -> None:
    scratch_card.inside.fail("dhcp")
    configure(scratch_card, proto="dhcp")
    assert scratch_card.addresses("eth1") == []
    scratch_card.inside.heal("dhcp")
    scratch_card.wait_address("eth1", scratch_card.lease("eth1"))
    wait_for(lambda: default_routes(scratch_card) == ["10.0.1.1 eth1"], 10, lambda: "no default route")


def test_broken_configuration_is_no_failure_and_brings_nothing_up(scratch_card: Card) -> None:
    scratch_card.inside.write("/etc/config/network", "config interface 'x\n")
    configure(scratch_card)
    assert (scratch_card.addresses("eth0"), scratch_card.addresses("eth1")) == ([], [])


def test_card_is_reset_in_the_moment_in_which_its_network_starts(scratch_card: Card) -> None:
    who = scratch_card.inside.path("/run/netifd.pid")
    late = "strace -f -e trace=pwrite64 -e inject=pwrite64:delay_enter=1000000"  # microseconds
    scratch_card.inside.run(["sh", "-c", f"{late} {shlex.join(RESTART)} </dev/null >/dev/null 2>&1 &"])
    wait_for(lambda: who.read_text() == "", PATIENCE, lambda: "the network does not start")
    scratch_card.reset()
    assert scratch_card.addresses("eth0") == ["10.0.0.11/24"]
