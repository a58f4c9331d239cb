# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The modules that change nothing, and the reboot, without a process of Ansible's."""

from typing import Any

import pytest
from ansible_collections.tarvel.cards.plugins.modules import reboot, versions, wait
from fake_module import BAD, GOOD, FakeModule, ended

LATE = {**BAD, "code": 5, "category": "timeout", "phase": "waiting for up", "state": "not found"}
WAITING: dict[str, Any] = {"for": "up", "expect": None, "wait_time": 9}


def test_a_card_that_is_late_is_a_failure() -> None:
    module = FakeModule(WAITING, LATE)
    assert ended(module, wait.work)["rc"] == 5
    assert module.commands[0][3:] == ["wait", "--for=up", "--wait-time=9", "card1"]


def test_in_check_mode_one_look_is_enough() -> None:
    module = FakeModule(WAITING, LATE, check=True)
    end = ended(module, wait.work)
    assert (end["failed"], end["changed"], end["answer"]["state"]) == (False, False, "not found")
    assert "--wait-time=0" in module.commands[0]


def test_in_check_mode_too_a_look_can_fail() -> None:
    assert ended(FakeModule(WAITING, {**LATE, "code": 6}, check=True), wait.work)["failed"] is True


def test_versions_that_are_waited_for_are_given_as_a_file() -> None:
    module = FakeModule({"for": "versions", "expect": {"kernel": "K"}, "wait_time": None}, GOOD)
    ended(module, wait.work)
    assert module.commands[0][3:] == ["wait", "--for=versions=/dev/stdin", "card1"]
    assert module.inputs == ["kernel K\n"]


def test_versions_are_compared_before_they_are_facts() -> None:
    told = {**GOOD, "components": [{"component": "kernel", "version": "K"}]}
    module = FakeModule({"expect": {"kernel": "K"}}, {**told, "components": []}, told)
    assert ended(module, versions.work)["ansible_facts"] == {"tarvel_versions": {"kernel": "K"}}
    assert [command[3:] for command in module.commands] == [
        ["versions", "--expect=/dev/stdin", "card1"],
        ["versions", "card1"],
    ]
    assert module.inputs == ["kernel K\n", None]


@pytest.mark.parametrize(
    ("params", "words"),
    [
        ({"wait": False, "wait_time": None}, []),
        ({"wait": True, "wait_time": 0}, ["--wait", "--wait-time=0"]),
    ],
)
def test_a_reboot_is_waited_for_if_it_is_told(params: dict[str, Any], words: list[str]) -> None:
    module = FakeModule(params, GOOD)
    ended(module, reboot.work)
    assert module.commands[0][3:] == ["reboot", *words, "card1"]
