# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Rebooting: the card goes down, comes back, and is the same card."""

import pytest
from asking import ask, reboot, udp_peer
from card import ADDRESSES, VirtualCard
from support.documents import reboot_card, time_reference
from wire import Command, Status, request


@pytest.mark.parametrize("device", ADDRESSES)
def test_a_reboot_request_reboots_the_card(card: VirtualCard, device: str) -> None:
    before = card.boot_id()
    reboot(card, device)
    assert card.boot_id() != before
    assert ask(Command.VERSIONS, address=ADDRESSES[device]).header.status == Status.SUCCESS


def test_a_reboot_stops_the_daemon_first_and_the_network_last(card: VirtualCard) -> None:
    card.run("/etc/init.d/ntpd enable")
    before = len(card.console())
    reboot(card)
    card.run("/etc/init.d/ntpd disable")
    said = card.console()[before:].split()
    assert [word for word in said if word.startswith("K")] == ["K10tarveld", "K65ntpd", "K89log", "K90network"]


def test_a_reboot_request_for_another_card_is_dropped(card: VirtualCard) -> None:
    with udp_peer("eth0") as peer:
        assert peer.is_ignored(request(Command.REBOOT, reboot_card(to="card2")))
    card.wait_for_log('Message is for "card2" not for me "card1", drop it')
    assert card.status("pidof reboot") == 1


def test_the_working_directory_is_made_anew(card: VirtualCard) -> None:
    card.run("touch /tmp/upgrade/left-behind")
    reboot(card)
    assert card.run("ls /tmp/upgrade") == ""
    assert "/tmp/upgrade successfully created" in card.log()


def test_an_enabled_ntpd_is_started_with_the_committed_server(card: VirtualCard) -> None:
    card.run("uci set system.ntp.server=10.0.0.77 && uci commit system && /etc/init.d/ntpd enable")
    reboot(card)
    card.wait_for(lambda: card.status("pidof ntpd") == 0, "ntpd runs")
    card.wait_for(lambda: "-p 10.0.0.77" in card.run("tr '\\0' ' ' </proc/$(pidof ntpd)/cmdline"), "with its server")
    card.run("/etc/init.d/ntpd stop; /etc/init.d/ntpd disable; uci set system.ntp.server=10.0.0.1 && uci commit system")


def test_an_ntp_server_that_was_only_staged_is_forgotten_and_the_mode_is_kept(card: VirtualCard) -> None:
    ask(Command.TIME_SET, time_reference("Ntp", "10.0.0.77"))
    reboot(card)
    assert 'Mode="Ntp" NtpServer="10.0.0.1"' in ask(Command.TIME_GET).text
