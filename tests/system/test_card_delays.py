# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How long a card that takes its time takes for what it does: what it writes down, as no clock here can be trusted."""

from support.daemon import COMMAND, bare
from support.documents import ip_configuration, reboot_card
from support.peers import UdpPeer
from tarvelsim import FAST_DELAYS, Card, Lan
from wire import Command, request

NETWORK_DOWN, NETWORK_SETUP, LEASE, RESPAWN, SHUTDOWN, LAST_WISH = 1.0, 0.05, 3.0, 5.0, 0.2, 1.0


def test_network_is_down_for_a_second_and_has_its_addresses_a_little_later(unhurried_card: Card, unhurried_udp: UdpPeer) -> None:
    mark = len(unhurried_card.records.delays())
    unhurried_udp.ask(request(Command.IP_SET, ip_configuration(to="unhurried")))
    assert unhurried_card.records.wait_delays(2, since=mark) == [NETWORK_DOWN, NETWORK_SETUP]


def test_lease_comes_seconds_later_and_is_asked_for_again_without_a_server(unhurried_card: Card) -> None:
    unhurried_card.inside.fail("dhcp")
    unhurried_card.inside.uci("set", "network.lanvemt2eth1.proto=dhcp")
    mark = len(unhurried_card.records.delays())
    unhurried_card.inside.run(["/etc/init.d/network", "restart"])
    assert unhurried_card.records.wait_delays(4, since=mark) == [NETWORK_DOWN, NETWORK_SETUP, LEASE, LEASE]


def test_daemon_is_started_again_after_five_seconds_each_time(unhurried_card: Card) -> None:
    mark = len(unhurried_card.records.delays())
    for count in (1, 2):
        unhurried_card.daemon.kill()
        assert unhurried_card.records.wait_delays(count, since=mark) == [RESPAWN] * count
        unhurried_card.daemon.wait_ready(timeout=60)


def test_daemon_ends_after_the_two_seconds_of_the_request_and_a_little(unhurried_card: Card, unhurried_udp: UdpPeer) -> None:
    """The two seconds are the caller's, in its command line; the platform's come when they are over."""
    mark = len(unhurried_card.records.delays())
    unhurried_udp.ask(request(Command.REBOOT, reboot_card(to="unhurried")))
    assert bare(unhurried_card.records.wait_command("reboot")) == "reboot -d 2 &"
    assert unhurried_card.records.wait_delays(1, since=mark) == [SHUTDOWN]


def test_who_is_left_in_a_reboot_has_a_second_to_end(unhurried_card: Card) -> None:
    unhurried_card.inside.run(["bash", "-c", "trap '' TERM; setsid sleep 1000 >/dev/null 2>&1 &"])
    mark = len(unhurried_card.records.delays())
    unhurried_card.inside.run(["reboot"])
    assert unhurried_card.records.wait_delays(2, since=mark) == [SHUTDOWN, LAST_WISH]


def test_fast_card_scales_them_all(lan: Lan) -> None:
    with lan.card("hurried", command=COMMAND, delays=FAST_DELAYS) as card:
        mark = len(card.records.delays())
        card.daemon.kill()
        assert card.records.wait_delays(1, since=mark) == [RESPAWN * FAST_DELAYS]
