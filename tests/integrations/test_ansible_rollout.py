# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The packaged roll-out: waves, the wrong version at which it stops, and how it goes on."""

import json
from collections.abc import Iterator
from pathlib import Path

import pytest
import tarvelsim
from playing import Ansible, Played
from simulated import numbered
from support.archives import archive

INSTALL, LOOK = "Have the release on the card", "See that the whole wave has it"
OLD, NEW = "KERN-6.1.0\n", "KERN-7.0.0\n"


@pytest.fixture(scope="module")
def cards() -> Iterator[list[tarvelsim.Card]]:
    with numbered(4) as cards:
        yield cards


@pytest.fixture
def ansible(tmp_path: Path, cards: list[tarvelsim.Card]) -> Ansible:
    """With an inventory of all cards, and a release."""
    for card in cards:
        card.inside.heal()
        card.inside.write("/etc/pnr/kernel", OLD)
    (tmp_path / "release.tar.gz").write_bytes(archive({"pnr/kernel": NEW.encode()}))
    inventory = {"plugin": "tarvel.cards.discover", "names": ["card[1-4]"], "interfaces": ["lan0"]}
    (tmp_path / "site.cards.yml").write_text(json.dumps(inventory))
    return Ansible(tmp_path)


def roll_out(ansible: Ansible, *words: str, code: int = 0) -> Played:
    settings = {
        "rollout_src": str(ansible.folder / "release.tar.gz"),
        "rollout_expect": {"kernel": NEW.strip()},
        "rollout_waves": [1, 2, "100%"],
        "rollout_delay": 0,
    }
    words = ("tarvel.cards.rollout", "-i", "site.cards.yml", "-e", json.dumps(settings), *words)
    return ansible.playbook(*words, code=code)


def kernels(cards: list[tarvelsim.Card]) -> list[str]:
    return [card.inside.read("/etc/pnr/kernel") for card in cards]


def test_a_wrong_version_stops_the_waves_and_they_go_on_when_it_is_right(
    ansible: Ansible, cards: list[tarvelsim.Card]
) -> None:
    cards[1].inside.fail("fwupgrade")
    stopped = roll_out(ansible, code=2)
    broken = stopped[INSTALL, "card2"]
    assert (broken["outcome"], broken["rc"], broken["attempts"]) == ("failed", 7, 1)
    assert stopped.hosts(INSTALL) == {"card1", "card2", "card3"}
    assert kernels(cards) == [NEW, OLD, NEW, OLD]
    cards[1].inside.heal()
    resumed = roll_out(ansible)
    changed = {host: result["changed"] for (name, host), result in resumed.items() if name == INSTALL}
    assert changed == {"card1": False, "card2": True, "card3": False, "card4": True}
    assert kernels(cards) == [NEW] * 4
    assert resumed.hosts(LOOK) == {"card1", "card2", "card3", "card4"}


def test_silence_is_tried_again_and_stops_the_first_wave(ansible: Ansible, cards: list[tarvelsim.Card]) -> None:
    cards[0].set_link("eth0", False)
    cards[0].set_link("eth1", False)
    try:
        stopped = roll_out(ansible, code=2)
    finally:
        cards[0].set_link("eth0", True)
        cards[0].set_link("eth1", True)
    silent = stopped[INSTALL, "card1"]
    assert (silent["outcome"], silent["rc"], silent["attempts"]) == ("failed", 5, 2)
    assert stopped.hosts(INSTALL) == {"card1"}
    assert kernels(cards) == [OLD] * 4


def test_check_mode_tells_what_would_be_done(ansible: Ansible, cards: list[tarvelsim.Card]) -> None:
    cards[3].inside.write("/etc/pnr/kernel", NEW)
    told = roll_out(ansible, "--check", "--diff")
    changed = {host: result["changed"] for (name, host), result in told.items() if name == INSTALL}
    assert changed == {"card1": True, "card2": True, "card3": True, "card4": False}
    assert kernels(cards) == [OLD, OLD, OLD, NEW]


def test_slow_cards_get_their_time(ansible: Ansible) -> None:
    played = roll_out(ansible, "--limit", "card1", "-e", "rollout_timeout=77.5")
    for step in (INSTALL, LOOK):
        assert played[step, "card1"]["invocation"]["module_args"]["timeout"] == 77.5
