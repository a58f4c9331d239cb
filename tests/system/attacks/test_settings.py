# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Settings that nobody asked for any more, or that leave nobody able to ask."""

from support.daemon import IS_HARDENED
from support.documents import interface, ip_configuration
from support.peers import UdpPeer
from tarvelsim import Card
from wire import Command, Status, request


def test_settings_that_a_killed_daemon_has_left_staged(scratch_card: Card) -> None:
    scratch_card.daemon.supervise(False)
    scratch_card.daemon.stop()
    scratch_card.inside.write("/var/tarveld.staging", "")
    scratch_card.inside.uci("set", "network.lanvemt2eth2.ipaddr=6.6.6.6")
    scratch_card.daemon.start()
    assert ("6.6.6.6" in scratch_card.inside.uci("changes", "network")) != IS_HARDENED
    assert scratch_card.inside.exists("/var/tarveld.staging") != IS_HARDENED


def test_settings_that_somebody_else_has_staged_are_left_by_both_builds(scratch_card: Card) -> None:
    scratch_card.daemon.supervise(False)
    scratch_card.daemon.stop()
    scratch_card.inside.uci("set", "network.lanvemt2eth2.ipaddr=6.6.6.6")
    scratch_card.daemon.start()
    assert "6.6.6.6" in scratch_card.inside.uci("changes", "network")


def test_both_interfaces_disabled(scratch_card: Card, udp: UdpPeer) -> None:
    both = ip_configuration(interface("VemkEth1", "Disabled"), interface("VemkEth2", "Disabled"))
    assert udp.ask(request(Command.IP_SET, both)).header.status == Status.FAILURE
    assert scratch_card.inside.uci("get", "network.lanvemt2eth1.proto") == "static"
    assert scratch_card.inside.uci("changes", "network") == ""


def test_address_at_which_nobody_finds_the_card(scratch_card: Card, udp: UdpPeer) -> None:
    lost = ip_configuration(interface("VemkEth1", "Static", "192.0.2.1", "255.255.255.255"))
    assert udp.ask(request(Command.IP_SET, lost)).header.status == Status.SUCCESS
    scratch_card.records.wait_command("/etc/init.d/network restart")
    assert "192.0.2.1" in scratch_card.inside.read("/etc/config/network")
