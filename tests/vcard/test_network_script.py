# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The virtual card's network script, which is to be as strict as OpenWrt's."""

import pytest
from card import VirtualCard


@pytest.mark.parametrize("option", ["ipaddr=10.0.1.0x0b", "ipaddr=10.11", "netmask=0xffffff00", "gateway=10.1"])
def test_a_setting_in_an_unusual_form_costs_the_address_and_restarting_succeeds_all_the_same(
    card: VirtualCard, option: str
) -> None:
    card.run(f"uci set network.lanvemt2eth2.{option} && /etc/init.d/network restart")
    card.wait_for(lambda: "inet addr:10.0.0.10 " in card.run("ifconfig eth0"), "eth0 has its address")
    card.wait_for(lambda: " UP " in card.run("ifconfig eth1"), "eth1 is up")
    assert "inet addr" not in card.run("ifconfig eth1")
    card.run("uci revert network && /etc/init.d/network restart")
    card.wait_for(lambda: "inet addr:10.0.1.10 " in card.run("ifconfig eth1"), "eth1 has its address again")
