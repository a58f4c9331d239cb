# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Each module as ansible-playbook runs it: in check mode, for real, and once more. One run for all, since each costs."""

import json
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import pytest
import tarvelsim
from playing import Ansible, Played, checked, each_way, task
from simulated import running
from support.archives import archive

NEW = {"kernel": "KERN-7.0.0"}
OLD = {"kernel": "KERN-6.1.0"}
ADDRESS = {"interface": "VemkEth1", "mode": "static", "address": "10.0.0.77/24"}


@pytest.fixture(scope="module")
def cards() -> Iterator[dict[str, tarvelsim.Card]]:
    """Two, and two more that have one name."""
    with running({"card1": "card1", "card2": "card2", "double": "double", "other": "double"}) as cards:
        yield cards


@pytest.fixture(scope="module")
def folder(tmp_path_factory: pytest.TempPathFactory) -> Path:
    return tmp_path_factory.mktemp("ansible")


@pytest.fixture(scope="module")
def played(cards: dict[str, tarvelsim.Card], folder: Path) -> Played:
    good, evil, stranger = (folder / name for name in ("good.tar.gz", "evil.tar.gz", "stranger"))
    good.write_bytes(archive({"pnr/kernel": b"KERN-7.0.0\n"}))
    evil.write_bytes(archive({"../pnr/kernel": b"KERN-7.0.0\n"}))
    stranger.write_text("#!/bin/sh\necho somebody else\n")
    stranger.chmod(0o755)
    by_hand: dict[str, Any] = {"mode": "manual", "tolerance": 3600}
    absent: dict[str, Any] = {"card": "nobody", "timeout": 0.3, "retries": 0}
    return Ansible(folder).play(
        [
            task("clock is right", "time", **by_hand),
            *each_way("firmware", "firmware", src=str(good), expect=NEW),
            *each_way("time", "time", mode="ntp", server="10.0.0.5"),
            task("clock refused", "time", mode="manual"),
            *each_way("ip", "ip", **ADDRESS),
            task("versions", "versions", expect=NEW),
            checked("versions", "versions"),
            task("idle", "wait", **{"for": "idle"}),
            checked("not down", "wait", **{"for": "down"}),
            task("has them", "wait", expect=NEW, **{"for": "versions"}),
            checked("reboot", "reboot", wait=True),
            task("reboot done", "reboot", wait=True, wait_time=300),
            task("others expected", "versions", card="card2", expect=NEW),
            task("no such card", "versions", **absent),
            task("change of nobody", "time", mode="ntp", server="10.0.0.5", **absent),
            task("two cards", "time", card="double", mode="ntp", server="10.0.0.5"),
            checked("two cards forced", "time", card="double", mode="ntp", server="10.0.0.5", force=True),
            task("evil archive", "firmware", card="card2", src=str(evil), expect=NEW),
            task("wrong archive", "firmware", card="card2", src=str(good), expect={"kernel": "KERN-8.0.0"}),
            task("somebody's address", "ip", card="card2", **ADDRESS),
            task("nobody listens", "versions", card="127.0.0.1"),
            task("several cards", "versions", card="card[1-2]"),
            task("no text", "versions", expect={"kernel": 7}),
            task("somebody else", "versions", executable=str(stranger)),
            task("no program", "versions", executable="no-such-program"),
        ]
    )


def before_and_after(result: dict[str, Any]) -> tuple[Any, Any]:
    diff = result["diff"]
    assert all(text.endswith("}\n") for text in diff.values())
    return json.loads(diff["before"]), json.loads(diff["after"])


@pytest.mark.parametrize("module", ["firmware", "time", "ip"])
def test_a_change_is_told_before_it_is_made_and_made_once(played: Played, module: str) -> None:
    modes = ("checked", "done", "again", "again checked")
    results = [played.of(f"{module} {mode}") for mode in modes]
    assert [result["outcome"] for result in results] == ["ok"] * 4, results
    assert [result["changed"] for result in results] == [True, True, False, False]


@pytest.mark.parametrize(
    ("module", "before", "after"),
    [
        ("firmware", OLD, NEW),
        ("time", {"mode": "Manual", "server": "10.0.0.1"}, {"mode": "Ntp", "server": "10.0.0.5"}),
        ("ip", {"VemkEth1": "Static 10.0.0.11/255.255.255.0"}, {"VemkEth1": "Static 10.0.0.77/255.255.255.0"}),
    ],
)
def test_the_diff_is_the_same_in_check_mode(
    played: Played, module: str, before: dict[str, str], after: dict[str, str]
) -> None:
    for mode in ("checked", "done"):
        assert before_and_after(played.of(f"{module} {mode}")) == (before, after)
    for mode in ("again", "again checked"):
        assert before_and_after(played.of(f"{module} {mode}")) == (after, after)


def test_check_mode_sent_nothing(played: Played) -> None:
    assert played.of("firmware checked")["answer"]["verdict"] == "not sent"
    assert played.of("firmware done")["answer"]["verdict"] == "upgraded"
    assert played.of("ip done")["answer"]["now"] == played.of("ip checked")["answer"]["now"]


def test_the_hint_tells_what_else_is_to_know(played: Played) -> None:
    assert "staged, not committed" in played.of("time done")["hint"]


def test_versions_are_facts(played: Played) -> None:
    for name in ("versions", "versions checked"):
        result = played.of(name)
        assert result["ansible_facts"]["tarvel_versions"]["kernel"] == "KERN-7.0.0"
        assert result["changed"] is False


def test_a_card_is_waited_for(played: Played) -> None:
    assert played.of("idle")["answer"]["state"] == "up and idle"
    assert played.of("has them")["outcome"] == "ok"
    assert played.of("idle")["changed"] is False


def test_in_check_mode_nobody_waits(played: Played) -> None:
    looked = played.of("not down checked")
    assert (looked["outcome"], looked["changed"]) == ("ok", False)
    assert looked["answer"]["state"].startswith("up")


def test_a_card_is_rebooted_for_real_only(played: Played, cards: dict[str, tarvelsim.Card]) -> None:
    assert played.of("reboot checked")["changed"] is True
    assert played.of("reboot done")["changed"] is True
    assert played.of("reboot done")["answer"]["state"] == "back"
    assert cards["card1"].boots == 2


def test_a_clock_within_its_tolerance_is_left_alone(played: Played) -> None:
    assert (played.of("clock is right")["outcome"], played.of("clock is right")["changed"]) == ("ok", False)


@pytest.mark.parametrize(
    ("name", "code", "category", "words"),
    [
        ("others expected", 9, "differs", "not as expected: kernel"),
        ("clock refused", 3, "refused-by-card", "the card answered that the command failed"),
        ("no such card", 5, "not-found", "nobody answered by this name"),
        ("change of nobody", 5, "not-found", "nobody answered by this name"),
        ("two cards", 11, "ambiguous", "two cards have this name"),
        ("evil archive", 10, "bad-archive", 'climbs out of the directory with ".."'),
        ("wrong archive", 7, "not-as-expected", "has not the expected versions of kernel"),
        ("somebody's address", 2, "needs-force", "another card has 10.0.0.77 already"),
        ("nobody listens", 6, "refused", "127.0.0.1"),
    ],
)
def test_a_failure_is_told_in_the_clients_words(
    played: Played, name: str, code: int, category: str, words: str
) -> None:
    result = played.of(name)
    assert result["outcome"] == "failed"
    assert (result["rc"], result["category"]) == (code, category)
    assert f"{category} while {result['phase']} (exit status {code}, " in result["msg"]
    assert words in result["msg"]
    assert "error: " in result["stderr"]


def test_a_failure_tells_whether_the_card_is_another_one(played: Played) -> None:
    assert played.of("wrong archive")["changed"] is True
    assert played.of("clock refused")["changed"] is True
    assert played.of("evil archive")["changed"] is False


def test_force_goes_on_with_the_warning_of_the_client(played: Played) -> None:
    forced = played.of("two cards forced checked")
    assert (forced["outcome"], forced["changed"]) == ("ok", True)
    assert "two cards have this name" in forced["warnings"][0]


@pytest.mark.parametrize(
    ("name", "words"),
    [
        ("several cards", '"card[1-2]" is not the name or the address of one card'),
        ("no text", "the version of kernel is no text: write it in quotes"),
        ("somebody else", "printed no JSON, but: somebody else"),
        ("no program", "no-such-program"),
    ],
)
def test_what_cannot_be_done_is_told(played: Played, name: str, words: str) -> None:
    assert played.of(name)["outcome"] == "failed"
    assert words in played.of(name)["msg"]


def test_a_card_that_was_not_changed_is_as_before(played: Played, cards: dict[str, tarvelsim.Card]) -> None:
    assert played.of("evil archive")["outcome"] == "failed"
    assert cards["card2"].address("eth0") == cards["card2"].planned_addresses()["eth0"]
    assert cards["double"].inside.uci("get", "system.ntp.server").strip() == "10.0.0.1"
