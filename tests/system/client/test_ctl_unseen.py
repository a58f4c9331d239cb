# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What no client can see, and the manual page therefore lists: these changes go through."""

from support.ctl import Ctl
from support.fake_card import FakeTcpCard, answer
from support.stopping import stopped
from tarvelsim import Card
from tarvelsim.waiting import wait_for

NTP = ("time", "set", "--ntp", "10.0.0.99")


def test_a_twin_that_is_busy_is_not_seen_and_does_later_what_it_heard(ctl: Ctl, scratch: Card, twin: Card) -> None:
    with stopped(twin):
        answer = ctl.json("ip", "set", "--if", "VemkEth2", "--dhcp", "rack1")
    assert answer.code == 0
    wait_for(
        lambda: twin.inside.uci("get", "network.lanvemt2eth2.proto") == "dhcp", 30, lambda: "the twin heard nothing"
    )


def test_a_twin_that_is_off_is_not_seen(ctl: Ctl, scratch: Card, twin: Card) -> None:
    twin.daemon.stop()
    assert ctl.json(*NTP, "rack1").code == 0


def test_an_address_that_hears_no_broadcast_is_not_checked(ctl: Ctl, firmware: str) -> None:
    """As behind a router."""
    with FakeTcpCard(answer) as card:
        result = ctl.json("firmware", "upload", firmware, card.address).result
    assert (result["code"], result["checked"]) == (0, False)
