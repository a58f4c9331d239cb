# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Setting the clock: what no namespace can show."""

import pytest
from asking import ask
from card import ADDRESSES, VirtualCard
from support.documents import time_reference
from wire import Command, Status

LATER = 2_000_000_000
LATER_TEXT = "2033-05-18T03:33:20"
EARLIER = 1_000_000_000
EARLIER_TEXT = "2001-09-09T01:46:40"
LAST_SECOND_OF_32_BITS = "2038-01-19T03:14:07"
A_MINUTE = 60


def set_clock(moment: str, address: str = ADDRESSES["eth0"]) -> int:
    return ask(Command.TIME_SET, time_reference("Manual", date_time=moment), address).header.status


@pytest.mark.parametrize("device", ADDRESSES)
def test_a_manual_time_moves_the_clock_of_the_card(card: VirtualCard, device: str) -> None:
    card.run(f"date -s @{EARLIER}")
    assert set_clock(LATER_TEXT, ADDRESSES[device]) == Status.SUCCESS
    assert LATER <= card.clock() < LATER + A_MINUTE


def test_a_clock_can_be_set_back_by_years(card: VirtualCard) -> None:
    card.run(f"date -s @{LATER}")
    assert set_clock(EARLIER_TEXT) == Status.SUCCESS
    assert EARLIER <= card.clock() < EARLIER + A_MINUTE


def test_the_card_reports_the_new_time(card: VirtualCard) -> None:
    set_clock(LATER_TEXT)
    text = ask(Command.TIME_GET).text
    assert 'Mode="Manual" NtpServer="10.0.0.1" DateTime="2033-05-18T03:3' in text


def test_a_moment_before_the_card_was_started_is_refused_by_the_kernel(card: VirtualCard) -> None:
    card.wait_for(lambda: card.uptime() > 1, "the card has run for more than a second")
    assert set_clock("1970-01-01T00:00:01") == Status.FAILURE
    card.wait_for_log("daemon.warn tarveld[")
    card.wait_for_log("clock_settime() FAILED: Invalid argument")


def test_a_refused_moment_leaves_the_clock_alone(card: VirtualCard) -> None:
    card.wait_for(lambda: card.uptime() > 1, "the card has run for more than a second")
    card.run(f"date -s @{LATER}")
    set_clock("1970-01-01T00:00:01")
    assert LATER <= card.clock() < LATER + A_MINUTE


def test_the_last_second_that_32_bits_hold_can_be_set(card: VirtualCard) -> None:
    assert set_clock(LAST_SECOND_OF_32_BITS) == Status.SUCCESS
    assert card.clock() >= 2**31 - 1


def test_a_second_later_is_refused(card: VirtualCard) -> None:
    assert set_clock("2038-01-19T03:14:08") == Status.FAILURE
    card.wait_for_log("Setting unix time to -2147483648")


def test_the_clock_runs_on_past_the_end_of_32_bits(card: VirtualCard) -> None:
    set_clock(LAST_SECOND_OF_32_BITS)
    card.wait_for(lambda: card.clock() > 2**31, "the 32 bits are over")
    assert 'DateTime="2038-01-19T03:14:' in ask(Command.TIME_GET).text


def test_a_manual_time_takes_the_start_link_of_ntp_away(card: VirtualCard) -> None:
    card.run("/etc/init.d/ntpd enable")
    set_clock(LATER_TEXT)
    assert card.status("test -e /etc/rc.d/S65ntpd") == 1


def test_ntp_mode_starts_the_ntp_client_with_the_new_server(card: VirtualCard) -> None:
    assert ask(Command.TIME_SET, time_reference("Ntp", "10.0.0.77")).header.status == Status.SUCCESS
    assert 'Mode="Ntp" NtpServer="10.0.0.77"' in ask(Command.TIME_GET).text
    assert "-p 10.0.0.77" in card.run("ps | grep '[n]tpd -n'")


def test_a_time_change_leaves_the_mark_for_replication(card: VirtualCard) -> None:
    card.run("rm -f /var/timesettings.replication")
    set_clock(LATER_TEXT)
    assert card.status("test -e /var/timesettings.replication") == 0
