# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""scripts/card with several LANs on one machine: each is reached by its name."""

import re
from collections.abc import Iterator
from pathlib import Path

import pytest
from support.bench import Bench

@pytest.fixture(scope="module")
def two_lans(bench: Bench) -> Iterator[list[str]]:
    with bench.running("--lan", "left") as left, bench.running("--lan", "right", "card1", "other") as right:
        yield [left[-1], right[-1]]


def test_who_starts_a_named_lan_is_told_how_to_reach_it(two_lans: list[str]) -> None:
    assert [re.findall(r"scripts/card [^,.]*", line) for line in two_lans] == [
        [f"scripts/card shell --lan {name} card1", f"scripts/card client --lan {name}"] for name in ("left", "right")
    ]


@pytest.mark.parametrize("name", ["left", "right"])
def test_client_and_card_are_those_of_the_named_lan(bench: Bench, two_lans: list[str], name: str) -> None:
    bench("shell", "--lan", name, "card1", "--", "touch", f"/run/card/of-{name}")
    status, files, _ = bench("client", "--lan", name, "--", "sh", "-c", "ls $TARVEL_LAN $TARVEL_LAN/card1")
    assert status == 0
    assert [word for word in files.split() if word == "other" or word.startswith("of-")] == (
        [f"of-{name}"] if name == "left" else ["other", f"of-{name}"]
    )


def test_log_is_that_of_the_named_lan(bench: Bench, two_lans: list[str]) -> None:
    status, log, _ = bench("log", "--lan", "right", "other")
    assert (status, log.count("Starting...")) == (0, 1)
    status, _, complaint = bench("log", "--lan", "left", "other")
    assert status == 1
    assert "no card other is running; there is card1" in complaint


def test_which_lan_must_be_said_where_several_run(bench: Bench, two_lans: list[str]) -> None:
    for words in (["client", "--", "true"], ["shell", "card1", "--", "true"]):
        status, _, complaint = bench(*words)
        assert status == 1
        assert "say with --lan which one" in complaint
        assert sorted(re.findall("left|right", complaint)) == ["left", "right"]


def test_card_that_only_one_lan_has_needs_no_name_of_the_lan(bench: Bench, two_lans: list[str]) -> None:
    assert bench("shell", "other", "--", "true")[0] == 0


def test_list_says_which_card_is_on_which_lan(bench: Bench, two_lans: list[str]) -> None:
    cards: dict[str, list[str]] = {}
    for line in bench("list")[1].splitlines():
        if line.startswith("LAN "):
            lan = line.removeprefix("LAN ").rstrip(":")
            cards[lan] = []
        elif not line.startswith(" "):
            cards[lan].append(line.split(":")[0])
    assert cards == {"left": ["card1"], "right": ["card1", "other"]}


def test_a_name_is_given_once(bench: Bench, two_lans: list[str]) -> None:
    status, _, complaint = bench("run", "--lan", "left")
    assert (status, "a LAN called left is running already" in complaint) == (1, True)


def test_a_lan_that_does_not_run_is_told_with_those_that_do(bench: Bench, two_lans: list[str]) -> None:
    status, _, complaint = bench("client", "--lan", "middle", "--", "true")
    assert status == 1
    assert complaint.startswith("scripts/card: no LAN called middle is running; there is ")
    assert {"left", "right"} == set(re.findall("left|right", complaint))


@pytest.mark.parametrize("name", ["../left", "", "-x", "a b"])
def test_a_name_that_would_be_trouble_is_refused(bench: Bench, name: str) -> None:
    status, _, complaint = bench("run", f"--lan={name}")
    assert (status, "a LAN cannot be called" in complaint) == (1, True)


def test_a_lan_without_a_name_is_called_by_the_end_of_its_directory(bench: Bench) -> None:
    with bench.running():
        names = re.findall(r"^LAN (\S+):$", bench("list")[1], re.MULTILINE)
        (name,) = set(names) - {"left", "right"}
        status, run_dir, _ = bench("client", "--lan", name, "--", "sh", "-c", "echo $TARVEL_LAN")
    assert (status, Path(run_dir.strip()).name) == (0, f"tarvel-lan.{name}")


def test_lans_are_gone_when_they_have_ended(bench: Bench) -> None:
    with bench.running("--lan", "short"):
        pass
    assert bench("list", "--lan", "short")[0] == 1
