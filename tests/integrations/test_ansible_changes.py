# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the modules tell the client that set something, without a process of Ansible's."""

from typing import Any

import pytest
from ansible_collections.tarvel.cards.plugins.module_utils.settings import settings_words
from ansible_collections.tarvel.cards.plugins.modules import firmware, ip, ip_rescue, time
from fake_module import BAD, GOOD, FakeModule, ended


@pytest.mark.parametrize(
    ("mode", "address", "gateway", "option"),
    [
        ("static", "10.0.0.2/24", None, "--static=10.0.0.2/24"),
        ("static", "10.0.0.2/24", "10.0.0.1", "--static=10.0.0.2/24,10.0.0.1"),
        ("dhcp", None, None, "--dhcp"),
        ("disabled", None, None, "--disabled"),
    ],
)
def test_a_configuration_is_one_option(mode: str, address: str | None, gateway: str | None, option: str) -> None:
    params = {"interface": "VemkEth1", "mode": mode, "address": address, "gateway": gateway, "wait": 9}
    assert settings_words(params) == ["--if=VemkEth1", option, "--wait=9"]


def test_an_address_is_for_static_only() -> None:
    params = {"interface": "VemkEth1", "mode": "dhcp", "address": "10.0.0.2/24", "gateway": None, "wait": None}
    assert "takes neither address nor gateway" in ended(FakeModule(params), ip.work)["msg"]


def test_a_server_is_for_ntp_only() -> None:
    module = FakeModule({"mode": "manual", "server": "10.0.0.5", "tolerance": 2})
    assert "mode: manual takes no server" in ended(module, time.work)["msg"]
    assert module.commands == []


CLOCK = {**GOOD, "mode": "Manual", "server": "10.0.0.1", "skew": 0.4, "skew_error": 0.5}
BY_HAND = {"mode": "manual", "server": None, "tolerance": 2}


@pytest.mark.parametrize(
    ("clock", "sets"),
    [
        ({}, False),
        ({"skew": -2.4}, False),
        ({"skew": -2.6}, True),
        ({"skew": 99.0}, True),
        ({"skew": None, "skew_error": None}, True),
        ({"mode": "Ntp"}, True),
    ],
)
def test_a_clock_is_set_if_it_is_surely_off_or_follows_a_server(clock: dict[str, Any], sets: bool) -> None:
    module = FakeModule(BY_HAND, {**CLOCK, **clock}, {**CLOCK, "changed": True}, diff=True)
    assert ended(module, time.work)["changed"] is sets
    assert ("--manual=now" in module.commands[-1]) is sets
    assert (module.end["diff"]["before"] == module.end["diff"]["after"]) is not sets


FIRMWARE: dict[str, Any] = {"src": "/f", "expect": {"kernel": "K"}, "key": None, "patience": None, "max_size": None}
UPGRADE = ["firmware", "upgrade", "--expect=/dev/stdin"]


def test_without_a_diff_the_versions_are_not_read_before() -> None:
    module = FakeModule({**FIRMWARE, "patience": 9}, GOOD)
    end = ended(module, firmware.work)
    assert "diff" not in end
    assert "signed_by" not in end
    assert module.inputs == ["kernel K\n"]
    assert module.commands == [["tarvelctl", "-o", "json", *UPGRADE, "--patience=9", "/f", "card1"]]


SIGNED = {**GOOD, "target": "/f", "changed": False, "signed_by": "/k"}


@pytest.mark.parametrize("check", [False, True])
def test_a_signature_is_looked_at_before_the_card_is_asked(check: bool) -> None:
    module = FakeModule({**FIRMWARE, "key": "/k", "max_size": 7, "groups_file": "/g"}, SIGNED, GOOD, check=check)
    assert ended(module, firmware.work)["signed_by"] == "/k"
    rehearsal = ["--dry-run"] if check else []
    assert [command[3:] for command in module.commands] == [
        ["firmware", "check", "--key=/k", "--max-size=7", "/f"],
        ["--groups=/g", *rehearsal, *UPGRADE, "--max-size=7", "/f", "card1"],
    ]
    assert module.warnings == ["card1: mind the gap"]


def test_what_is_not_signed_reaches_no_card() -> None:
    module = FakeModule({**FIRMWARE, "key": "/k"}, {**BAD, "code": 10, "category": "bad-archive"})
    end = ended(module, firmware.work)
    assert (end["failed"], end["changed"], end["rc"], len(module.commands)) == (True, False, 10, 1)


FORMER: dict[str, Any] = {"interface": None, "mode": None, "address": None, "gateway": None, "wait": None, "to": None}
PLAN = {**GOOD, "frame": "00", "interface": "VemkEth1", "now": "Dhcp", "reachable": False, "wanted": "Disabled"}
RESCUED = {**PLAN, "changed": True, "state": "rescued"}


def test_a_lost_card_is_sent_what_was_rehearsed() -> None:
    module = FakeModule({**FORMER, "to": 2, "wait": 9}, PLAN, RESCUED)
    end = ended(module, ip_rescue.work)
    assert (end["changed"], end["left_alone"], end["answer"]["state"]) == (True, False, "rescued")
    words = ["ip", "rescue", "--wait=9", "--to=2", "card1"]
    assert [command[3:] for command in module.commands] == [["--dry-run", *words], words]


@pytest.mark.parametrize("check", [False, True])
@pytest.mark.parametrize(
    ("force", "now", "alone"), [(False, "Dhcp", True), (True, "Dhcp", False), (True, "Disabled", True)]
)
def test_a_card_that_is_well_is_left_alone(force: bool, now: str, alone: bool, check: bool) -> None:
    plan = {**PLAN, "reachable": True, "now": now}
    module = FakeModule({**FORMER, "force": force}, plan, {**RESCUED, "now": now}, check=check, diff=True)
    end = ended(module, ip_rescue.work)
    assert (end["changed"], end["left_alone"]) == (not alone, alone)
    assert (end["diff"]["before"] == end["diff"]["after"]) is alone
    assert len(module.commands) == (1 if check or alone else 2)
