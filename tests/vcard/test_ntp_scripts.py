# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The virtual card's scripts of the two time clients, which are to do and to say what OpenWrt's packages do."""

from collections.abc import Iterator

import pytest
from card import VirtualCard

NOT_FOUND = 'Command failed: ubus call service delete { "name": "ntpd" } (Not found)'


@pytest.fixture(autouse=True)
def restored(card: VirtualCard) -> Iterator[None]:
    yield
    card.run("/etc/init.d/ntpd stop 2>/dev/null; /etc/init.d/ntpd disable; /etc/init.d/ntpdate disable")
    card.run("uci revert system")
    card.wait_for(lambda: card.status("pidof ntpd") != 0, "ntpd has ended")


def links(card: VirtualCard) -> dict[str, str]:
    names = card.run("ls /etc/rc.d | grep ntp || true").split()
    return {name: card.run(f"readlink /etc/rc.d/{name}") for name in names}


def servers(card: VirtualCard) -> str | None:
    """What the running ntpd was started with."""
    found = card.run("tr '\\0' ' ' </proc/$(pidof ntpd)/cmdline || true")
    return found.partition(" -n ")[2].strip() or None


def start(card: VirtualCard) -> None:
    assert card.status("/etc/init.d/ntpd start") == 0


def test_enabled_ntpd_is_started_and_stopped(card: VirtualCard) -> None:
    card.run("/etc/init.d/ntpd enable")
    assert links(card) == {"K65ntpd": "../init.d/ntpd", "S65ntpd": "../init.d/ntpd"}


def test_enabled_ntpdate_is_only_started(card: VirtualCard) -> None:
    card.run("/etc/init.d/ntpdate enable")
    assert links(card) == {"S60ntpdate": "../init.d/ntpdate"}


def test_stopping_an_ntpd_that_is_stopped_complains_and_succeeds(card: VirtualCard) -> None:
    assert card.run("/etc/init.d/ntpd stop 2>&1") == NOT_FOUND


def test_ntpd_is_told_a_server_that_is_only_staged(card: VirtualCard) -> None:
    card.run("uci set system.ntp.server=10.0.0.9")
    start(card)
    assert servers(card) == "-p 10.0.0.9"


@pytest.mark.parametrize("change", ["delete system.ntp.server", "set system.ntp.enabled=0", "set system.ntp.server=x,y"])
def test_ntpd_that_cannot_be_is_no_failure(card: VirtualCard, change: str) -> None:
    card.run("uci set system.ntp.server=10.0.0.9")
    card.run(f"uci {change}")
    start(card)
    assert card.status("pidof ntpd") != 0


def pauses(card: VirtualCard, action: str) -> list[str]:
    """How the script waits, as the shell tells."""
    trace = card.run(f"sh -x /etc/init.d/ntpdate {action} 2>&1").splitlines()
    return [line.removeprefix("+ sleep ") for line in trace if line.startswith("+ sleep ")]


def test_ntpdate_waits_two_seconds_for_each_of_three_servers_of_its_own(card: VirtualCard) -> None:
    card.run("uci set system.ntp.server=10.0.0.9")
    assert pauses(card, "start") == ["2", "2", "2"]


def test_stopping_ntpdate_does_nothing(card: VirtualCard) -> None:
    card.run("/etc/init.d/ntpdate enable")
    assert pauses(card, "stop") == []
    assert links(card) == {"S60ntpdate": "../init.d/ntpdate"}
