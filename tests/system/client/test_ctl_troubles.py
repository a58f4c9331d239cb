# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A fleet with troubles, rehearsed: what the client tells of each.

Whoever is to answer gets a minute; nothing is said here about how fast anybody is.
"""

import json
from collections.abc import Callable, Iterator
from pathlib import Path

import pytest
from support.bench import Bench
from support.ctl import Answer
from tarvelsim.plan import places
from tarvelsim.troubles import Kind, Troubles, description, plan
from tarvelsim.waiting import wait_for

CARDS, SEED = 10, "7"
NAMES = [f"card{number}" for number in range(1, CARDS + 1)]
TROUBLES: Troubles = plan(SEED, places(CARDS, 1))
PATIENCE = 300

Ctl = Callable[..., Answer]


def the_card(kind: Kind) -> int:
    (card,) = [card for card, trouble in TROUBLES.items() if trouble.kind is kind]
    return card


def the_other(kind: Kind) -> int:
    other = TROUBLES[the_card(kind)].other
    assert other is not None
    return other


def factory_address(card: int) -> str:
    return f"10.0.0.{11 + card}"


@pytest.fixture(scope="module")
def printed(bench: Bench) -> Iterator[list[str]]:
    with bench.running("--cards", str(CARDS), "--troubles", SEED) as lines:
        yield lines


@pytest.fixture
def ctl(bench: Bench, printed: list[str], program: Path, tmp_path: Path) -> Ctl:
    """The client on the fleet's LAN."""
    folders = [f"HOME={tmp_path}", f"XDG_CONFIG_HOME={tmp_path}/config", f"XDG_STATE_HOME={tmp_path}/state"]

    def run(*words: str, seconds: int = 60) -> Answer:
        command = ["env", *folders, str(program), "-o", "json", "--timeout", str(seconds), *words]
        return Answer(*bench("client", "--", *command))

    return run


def test_the_plan_is_printed_at_the_start(printed: list[str]) -> None:
    lines = description(TROUBLES, NAMES)
    assert [line.strip() for line in printed[: 1 + len(lines)]] == [f"Troubles of seed {SEED}:", *lines]


def test_whoever_is_well_or_only_slow_answers(ctl: Ctl) -> None:
    silent = {Kind.OFF, Kind.NO_DAEMON, Kind.MISADDRESSED, Kind.SAME_NAME}
    audible = [card for card in range(CARDS) if card not in TROUBLES or TROUBLES[card].kind not in silent]
    answer = ctl("versions", *(NAMES[card] for card in audible))
    assert answer.code == 0, answer.err
    assert len(answer.results) == CARDS - len(silent)


def test_a_card_that_is_off_is_none_and_one_without_daemon_refuses(ctl: Ctl) -> None:
    off, without = the_card(Kind.OFF), the_card(Kind.NO_DAEMON)
    by_name = ctl("versions", NAMES[off], NAMES[without], seconds=1)
    assert [result["category"] for result in by_name.results] == ["not-found"] * 2
    by_address = ctl("versions", factory_address(off), factory_address(without))
    assert [result["category"] for result in by_address.results] == ["no-route", "refused"]


def test_a_misaddressed_card_is_heard_and_out_of_reach(ctl: Ctl) -> None:
    answer = ctl("versions", NAMES[the_card(Kind.MISADDRESSED)])
    assert answer.result["category"] == "no-address"
    assert "172.16.0." in answer.result["hint"] or "172.17.0." in answer.result["hint"]


def test_discover_finds_the_misaddressed_card_by_its_broadcasts(ctl: Ctl) -> None:
    def strangers() -> set[str]:
        results = ctl("discover", seconds=2).results
        return {result["target"] for result in results if not result["reachable"]}

    card = the_card(Kind.MISADDRESSED)
    both = {f"172.{16 + network}.0.{10 + card}" for network in (0, 1)}
    wait_for(lambda: strangers() == both, PATIENCE, lambda: "it is not heard, or others are taken for it")


def test_two_with_one_name_are_told_apart(ctl: Ctl) -> None:
    def warns() -> bool:
        answer = ctl("versions", NAMES[the_other(Kind.SAME_NAME)])
        both = [factory_address(card(Kind.SAME_NAME)) for card in (the_card, the_other)]
        return "two cards have this name" in answer.err and all(address in answer.err for address in both)

    wait_for(warns, PATIENCE, lambda: "there is no warning")


def test_two_with_one_address_are_not_both_changed(ctl: Ctl) -> None:
    two = [NAMES[card(Kind.SAME_ADDRESS)] for card in (the_card, the_other)]
    answer = ctl("--yes", "reboot", *two)
    assert [result["category"] for result in answer.results] == ["ambiguous"] * 2
    assert all(f"both lead to {factory_address(the_other(Kind.SAME_ADDRESS))}" in each["hint"] for each in answer.results)


def test_the_plan_is_for_cards_of_other_names_too(bench: Bench) -> None:
    names = ["front", "back", "left", "right"]
    troubles = description(plan("spring", places(4, 2)), names)
    assert len(troubles) == 2
    with bench.running("--lan", "named", "--troubles", "spring", "--lans", "2", *names) as lines:
        assert [line.strip() for line in lines[1:3]] == troubles
        note = json.loads(bench("client", "--lan", "named", "--", "sh", "-c", "cat $TARVEL_LAN/plan.json")[1])
    assert note["lans"] == 2
