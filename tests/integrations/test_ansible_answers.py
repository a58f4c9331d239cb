# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the modules make of the client's answers, without a process of Ansible's."""

from typing import Any

import pytest
from ansible_collections.tarvel.cards.plugins.module_utils import answer
from ansible_collections.tarvel.cards.plugins.module_utils.client import Card
from fake_module import BAD, GOOD, FakeModule, ended


def reboot(module: Any, card: Card) -> None:
    card.end(card.change("reboot"))


@pytest.mark.parametrize(("told", "changed"), [(True, True), (False, False), (None, True)])
def test_what_nobody_knows_counts_as_changed(told: bool | None, changed: bool) -> None:
    assert ended(FakeModule({}, {**GOOD, "changed": told}), reboot)["changed"] is changed
    failure = ended(FakeModule({}, {**BAD, "changed": told}), reboot)
    assert (failure["failed"], failure["changed"], failure["rc"]) == (True, changed, 7)


@pytest.mark.parametrize("code", [*answer.MEANINGS, 77])
def test_each_exit_status_has_a_message(code: int) -> None:
    message = answer.failure({**BAD, "code": code})
    assert message.startswith(f"card1: unchanged while comparing (exit status {code}, ")
    assert message.endswith(": it is as before")
    assert len({answer.meaning(each) for each in (*answer.MEANINGS, 77)}) == len(answer.MEANINGS) + 1


def test_a_failure_of_no_card_names_none() -> None:
    assert answer.failure({**BAD, "target": None}).startswith("unchanged while comparing")


@pytest.mark.parametrize(
    ("out", "err", "words"),
    [
        ("usage: ...", "", "ended with 3 (refused by the card) and printed no JSON, but: usage: ..."),
        ("", "no such library\n", "but: no such library"),
        ("", "", "but: nothing"),
        ("[]", "", "answers in schema None"),
        ('{"schema": 3}', "", "answers in schema 3, and this collection reads 2"),
    ],
)
def test_what_is_no_document_is_told_with_its_text(out: str, err: str, words: str) -> None:
    with pytest.raises(answer.ClientError) as raised:
        answer.read_results(3, out, err)
    assert words in str(raised.value)
    assert (raised.value.code, raised.value.stderr) == (3, err)


def test_options_and_permissions_stand_in_the_command_line() -> None:
    params = {"groups_file": "/g", "interfaces": ["a", "b"], "timeout": 1.5, "retries": 0, "force": True}
    module = FakeModule({**params, "trust_groups": True, "no_rollback": True, "probe": False}, GOOD, check=True)
    ended(module, reboot)
    options = ["--interface=a", "--interface=b", "--groups=/g", "--timeout=1.5", "--retries=0"]
    allowed = ["--force", "--trust-groups", "--yes", "--no-probe", "--dry-run"]
    assert module.commands == [["tarvelctl", "-o", "json", *options, *allowed, "reboot", "card1"]]


def test_nothing_is_allowed_unless_it_is_told() -> None:
    module = FakeModule({}, GOOD)
    ended(module, reboot)
    assert module.commands == [["tarvelctl", "-o", "json", "reboot", "card1"]]
    assert module.warnings == ["card1: mind the gap"]


@pytest.mark.parametrize("target", ["", "a,b", "card[1-2]", "@rack", "-", "--force", "10.0.0.0/24", "a b"])
def test_a_target_that_is_not_one_card_is_refused_before_anything_is_run(target: str) -> None:
    module = FakeModule({"card": target})
    assert "is not the name or the address of one card" in ended(module, reboot)["msg"]
    assert module.commands == []


@pytest.mark.parametrize("version", [7, 1.1, None, "", " ", "a#b", "a\nb"])
def test_a_version_that_is_no_text_of_one_line_is_refused(version: Any) -> None:
    with pytest.raises(ValueError, match="expect: "):
        answer.versions_file({"kernel": version})


def test_versions_are_lines() -> None:
    assert answer.versions_file({"kernel": "K 1", "application": "A"}) == "kernel K 1\napplication A\n"
