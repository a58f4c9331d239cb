# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What no client can see, and the manual page therefore lists: these changes go through."""

import subprocess

from support.ctl import Answer, Ctl
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


def test_a_machine_that_can_hear_nobody_changes_what_has_an_address(ctl: Ctl) -> None:
    """In a network of its own, where there is the loopback device alone, and nobody on it."""
    isolated = ["unshare", "--net", "sh", "-c", 'ip link set lo up && exec "$@"', "sh", str(ctl.program)]
    words = ["-o", "json", "time", "set", "--ntp", "10.0.0.99", "127.0.0.1", "127.0.0.2", "rack1"]
    ended = subprocess.run([*isolated, *words], capture_output=True, text=True, env=ctl.environment, check=False)
    results = Answer(ended.returncode, ended.stdout, ended.stderr).results
    assert [result["category"] for result in results] == ["refused", "refused", "no-interface"]
    assert [result.get("checked") for result in results] == [False] * 3
    assert "warning: 127.0.0.1: whether two cards share its address was not checked" in ended.stderr
