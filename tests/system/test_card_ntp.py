# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card's two NTP scripts do what the platform's do, quirks included."""

import os
from collections.abc import Sequence

import pytest
from support.daemon import COMMAND
from tarvelsim import REAL_DELAYS, Card, Lan

NTPD, NTPDATE = "/etc/init.d/ntpd", "/etc/init.d/ntpdate"
LINKS = "/etc/rc.d"
CONFIGURATION = "/var/etc/ntpd.conf"
NOT_FOUND = 'Command failed: ubus call service delete { "name": "ntpd" } (Not found)\n'


def links(card: Card) -> dict[str, str]:
    return {name: os.readlink(card.inside.path(f"{LINKS}/{name}")) for name in card.inside.listdir(LINKS)}


def test_ntpd_is_enabled_by_a_link_to_start_and_one_to_stop(scratch_card: Card) -> None:
    scratch_card.inside.run([NTPD, "enable"])
    assert links(scratch_card) == {"S65ntpd": "../init.d/ntpd", "K65ntpd": "../init.d/ntpd"}
    scratch_card.inside.run([NTPD, "disable"])
    assert links(scratch_card) == {}


def test_ntpdate_is_enabled_by_a_link_to_start_alone(scratch_card: Card) -> None:
    scratch_card.inside.run([NTPDATE, "enable"])
    assert links(scratch_card) == {"S60ntpdate": "../init.d/ntpdate"}
    scratch_card.inside.run([NTPDATE, "disable"])
    assert links(scratch_card) == {}


@pytest.mark.parametrize("script", [NTPD, NTPDATE])
def test_what_is_not_enabled_can_be_disabled(card: Card, script: str) -> None:
    assert card.inside.run([script, "disable"], check=False).returncode == 0


def test_ntpd_is_given_the_server_even_when_that_is_only_staged(scratch_card: Card) -> None:
    scratch_card.inside.uci("set", "system.ntp.server=10.0.0.9")
    scratch_card.inside.run([NTPD, "start"])
    assert scratch_card.inside.read(CONFIGURATION) == "server 10.0.0.9 iburst\n"


def test_ntpd_takes_several_servers(scratch_card: Card) -> None:
    scratch_card.inside.write("/etc/config/system", "config timeserver 'ntp'\n\tlist server '10.0.0.9'\n\tlist server 'a.b'\n")
    scratch_card.inside.run([NTPD, "start"])
    assert scratch_card.inside.read(CONFIGURATION) == "server 10.0.0.9 iburst\nserver a.b iburst\n"


def test_ntpd_that_does_not_run_is_stopped_with_a_complaint_and_success(card: Card) -> None:
    done = card.inside.run([NTPD, "stop"], check=False)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", NOT_FOUND)


def test_ntpd_that_runs_is_stopped_without_a_word(scratch_card: Card) -> None:
    scratch_card.inside.run([NTPD, "start"])
    done = scratch_card.inside.run([NTPD, "stop"], check=False)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
    assert not scratch_card.inside.exists(CONFIGURATION)


@pytest.mark.parametrize(
    "change", [("delete", "system.ntp.server"), ("set", "system.ntp.enabled=0"), ("set", "system.ntp.server=x,y")]
)
def test_ntpd_without_a_server_of_a_name_or_disabled_is_not_started_with_success(
    scratch_card: Card, change: Sequence[str]
) -> None:
    scratch_card.inside.uci(*change)
    assert scratch_card.inside.run([NTPD, "start"], check=False).returncode == 0
    assert not scratch_card.inside.exists(CONFIGURATION)


def pauses(card: Card, action: str) -> list[str]:
    """How the script waits, as bash tells."""
    trace = card.inside.run(["bash", "-x", "/run/programs/ntpdate", action]).stderr
    return [line.removeprefix("+ sleep ") for line in trace.splitlines() if line.startswith("+ sleep ")]


def test_ntpdate_waits_for_three_servers_of_its_own(scratch_card: Card) -> None:
    scratch_card.inside.uci("delete", "system.ntp.server")
    assert len(pauses(scratch_card, "start")) == 3


def test_ntpdate_waits_two_seconds_for_each_on_a_card_that_takes_its_time(lan: Lan) -> None:
    with lan.card("unhurried", command=COMMAND, autostart=False, delays=REAL_DELAYS) as card:
        assert pauses(card, "start") == ["2.0", "2.0", "2.0"]


def test_stopping_ntpdate_does_nothing(scratch_card: Card) -> None:
    scratch_card.inside.run([NTPDATE, "enable"])
    assert pauses(scratch_card, "stop") == []
    assert links(scratch_card) == {"S60ntpdate": "../init.d/ntpdate"}
