# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The virtual card's network script, which is to be as strict, and as silent about it, as OpenWrt's."""

from collections.abc import Iterator

import pytest
from card import VirtualCard

RESTART = "/etc/init.d/network restart"


@pytest.fixture(autouse=True)
def restored(card: VirtualCard) -> Iterator[None]:
    yield
    card.run(f"uci revert network && {RESTART}")
    wait_until_configured(card)
    assert addresses(card) == ["10.0.1.10/24"]


def wait_until_configured(card: VirtualCard) -> None:
    card.wait_for(lambda: card.status("kill -0 $(cat /var/run/netifd.pid)") != 0, "the network is configured")


def configure(card: VirtualCard, *options: str, section: str = "lanvemt2eth2") -> None:
    """Restarts the network with these options of an interface, which are only staged."""
    for option in options:
        card.run(f"uci set network.{section}.{option}")
    card.run(RESTART)
    wait_until_configured(card)


def addresses(card: VirtualCard, device: str = "eth1") -> list[str]:
    lines = card.run(f"ip -4 address show dev {device}").splitlines()
    return [line.split()[1] for line in lines if line.split()[0] == "inet"]


def default_routes(card: VirtualCard) -> list[str]:
    """As "gateway device", with the metric if it is not 0."""
    routes = card.run("ip -4 route show").splitlines()
    return [route.removeprefix("default via ").replace("dev ", "").strip() for route in routes if "default" in route]


@pytest.mark.parametrize(
    "option", ["ipaddr=10.0.1.0x0b", "ipaddr=10.11", "netmask=0xffffff00", "netmask=33", "netmask=08",
        "netmask=255.256.0.0", "gateway=10.1",
    ]
)
def test_a_setting_in_an_unusual_form_costs_the_address_and_restarting_succeeds_all_the_same(
    card: VirtualCard, option: str
) -> None:
    configure(card, option)
    assert addresses(card, "eth0") == ["10.0.0.10/24"]
    assert addresses(card) == []
    assert " UP " in card.run("ifconfig eth1")


@pytest.mark.parametrize(("netmask", "length"), [
        ("255.255.0.0", 16), ("255.0.255.0", 8), ("255.255.255.255", 32), ("255.255.65280", 24), ("0xff.0xff.0.0", 16),
        ("24", 24), ("0x18", 24), ("030", 24),
    ],
)
def test_a_netmask_counts_as_far_as_its_first_zero_and_may_be_a_number_of_bits(
    card: VirtualCard, netmask: str, length: int
) -> None:
    configure(card, f"netmask={netmask}")
    assert addresses(card) == [f"10.0.1.10/{length}"]


def test_an_address_without_a_netmask_is_a_network_of_its_own(card: VirtualCard) -> None:
    card.run("uci delete network.lanvemt2eth2.netmask")
    configure(card)
    assert addresses(card) == ["10.0.1.10/32"]


def test_an_address_may_carry_the_length_of_its_prefix(card: VirtualCard) -> None:
    configure(card, "ipaddr=10.0.1.77/28")
    assert addresses(card) == ["10.0.1.77/28"]


def test_an_interface_may_have_a_list_of_addresses(card: VirtualCard) -> None:
    items = "list ipaddr 10.0.1.77\\n\\tlist ipaddr 10.0.2.77/16"
    card.run(f"cp /etc/config/network /tmp/kept && sed -i 's|option ipaddr .10.0.1.10.$|{items}|' /etc/config/network")
    try:
        configure(card)
        assert addresses(card) == ["10.0.1.77/24", "10.0.2.77/16"]
    finally:
        card.run("cp /tmp/kept /etc/config/network")


def test_a_broken_file_is_no_failure_and_brings_nothing_up(card: VirtualCard) -> None:
    card.run("cp /etc/config/network /tmp/kept && echo \"config interface 'x\" >/etc/config/network")
    try:
        configure(card)
        assert addresses(card, "eth0") == addresses(card) == []
    finally:
        card.run("cp /tmp/kept /etc/config/network")


@pytest.mark.parametrize("gateway", ["10.9.9.9", "10.0.0.1"])
def test_a_gateway_outside_of_the_interface_s_subnet_is_silently_no_route(card: VirtualCard, gateway: str) -> None:
    configure(card, f"gateway={gateway}")
    assert default_routes(card) == []
    assert addresses(card) == ["10.0.1.10/24"]


def test_the_gateway_of_the_later_interface_wins(card: VirtualCard) -> None:
    configure(card, "gateway=10.0.0.1", section="lanvemt2eth1")
    assert default_routes(card) == ["10.0.0.1 eth0"]
    configure(card, "gateway=10.0.1.1")
    assert default_routes(card)[0] == "10.0.1.1 eth1"
