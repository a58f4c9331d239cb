# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The module that brings lost cards back, and the key of the one for firmware, as ansible-playbook runs them."""

import json
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import pytest
import tarvelsim
from playing import Ansible, Played, checked, each_way, task
from simulated import running
from support.archives import archive
from support.signing import Maker, changed

KERNEL = "KERN-7.0.0"
EXPECT = {"kernel": KERNEL}
FILES = {"pnr/kernel": f"{KERNEL}\n".encode()}
STRAY, HOME, FREE = "172.16.5.5", "10.0.0.78", "10.0.0.79"


@pytest.fixture(scope="module")
def cards() -> Iterator[dict[str, tarvelsim.Card]]:
    """One that is well, and two without an address that works here."""
    with running({name: name for name in ("card1", "lost1", "lost2")}) as cards:
        for name in ("lost1", "lost2"):
            for device, address in {"eth0": STRAY, "eth1": "172.16.6.6"}.items():
                cards[name].inside.run(["ip", "address", "flush", "dev", device])
                cards[name].inside.run(["ip", "address", "add", f"{address}/24", "dev", device])
        yield cards


@pytest.fixture(scope="module")
def folder(tmp_path_factory: pytest.TempPathFactory) -> Path:
    return tmp_path_factory.mktemp("rescue")


@pytest.fixture(scope="module")
def maker(folder: Path) -> Maker:
    return Maker(folder, "maker")


@pytest.fixture(scope="module")
def played(cards: dict[str, tarvelsim.Card], folder: Path, maker: Maker) -> Played:
    signed, spoilt, bare = (folder / f"{name}.tar.gz" for name in ("signed", "spoilt", "bare"))
    members = maker.archive(FILES)
    signed.write_bytes(archive(members))
    spoilt.write_bytes(archive(changed(members, "pnr/kernel", b"KERN-6.6.6\n")))
    bare.write_bytes(archive(FILES))
    (folder / "state/tarvelctl").mkdir(parents=True)
    (folder / "state/tarvelctl/ip-lost1").write_text(f"VemkEth1 Static ={HOME} =255.255.255.0 - 1000000000\n")
    # Patient, so that a busy machine is no failure.
    key: dict[str, Any] = {"src": str(signed), "expect": EXPECT, "key": str(maker.public), "timeout": 60}
    lost1: dict[str, Any] = {"card": "lost1", "interfaces": ["lan0"], "wait": 300}
    lost2: dict[str, Any] = {**lost1, "card": "lost2"}
    here = {"interface": "VemkEth1", "mode": "static", "address": f"{FREE}/24"}
    forced = {**lost2, "interface": "VemkEth1", "mode": "dhcp", "force": True}
    return Ansible(folder).play(
        [
            checked("spoilt", "firmware", **{**key, "src": str(spoilt)}),
            task("spoilt", "firmware", **{**key, "src": str(spoilt)}),
            task("bare", "firmware", **{**key, "src": str(bare)}),
            task("no key", "firmware", **{**key, "key": str(maker.secret)}),
            *each_way("signed", "firmware", **key),
            task("bare again", "firmware", **{**key, "src": str(bare)}),
            task("well", "ip_rescue", **here),
            task("nothing known", "ip_rescue", **lost2),
            task("not that many", "ip_rescue", to=2, **lost1),
            *each_way("former", "ip_rescue", **lost1),
            task("taken", "ip_rescue", **lost2, **{**here, "address": f"{HOME}/24"}),
            task("told", "ip_rescue", **lost2, **here),
            task("forced done", "ip_rescue", **forced),
            task("forced again", "ip_rescue", **forced),
            task("half", "ip_rescue", interface="VemkEth1"),
            task("both", "ip_rescue", to=1, **here),
            task("no mode", "ip_rescue", address=f"{FREE}/24"),
        ]
    )


def before_and_after(result: dict[str, Any]) -> tuple[Any, Any]:
    return json.loads(result["diff"]["before"]), json.loads(result["diff"]["after"])


@pytest.mark.parametrize("name", ["spoilt", "spoilt checked", "bare", "bare again"])
def test_what_the_holder_of_the_key_has_not_made_is_refused(played: Played, maker: Maker, name: str) -> None:
    complaint = {
        "spoilt": "pnr/kernel has another sum than in its SHA256SUMS",
        "bare": "it is not signed: it has no SHA256SUMS and SHA256SUMS.sig",
    }[name.split()[0]]
    result = played.of(name)
    assert (result["outcome"], result["rc"], result["category"]) == ("failed", 10, "bad-archive")
    assert complaint in result["msg"]
    assert result["changed"] is False


def test_a_key_has_to_be_a_public_one(played: Played, maker: Maker) -> None:
    result = played.of("no key")
    assert (result["outcome"], result["rc"], result["changed"]) == ("failed", 10, False)
    assert f"{maker.secret} is no public key" in result["msg"]


def test_what_is_signed_is_installed_once(played: Played, maker: Maker, cards: dict[str, tarvelsim.Card]) -> None:
    results = [played.of(f"signed {mode}") for mode in ("checked", "done", "again", "again checked")]
    assert [(result["outcome"], result["changed"]) for result in results] == [
        ("ok", True),
        ("ok", True),
        ("ok", False),
        ("ok", False),
    ], results
    assert {result["signed_by"] for result in results} == {str(maker.public)}
    # Only what was signed has reached the card: it had the old version until then.
    assert before_and_after(results[0])[0] == before_and_after(results[1])[0] == {"kernel": "KERN-6.1.0"}
    assert cards["card1"].inside.read("/etc/pnr/kernel").strip() == KERNEL


def test_a_card_that_is_well_is_no_lost_one(played: Played, cards: dict[str, tarvelsim.Card]) -> None:
    result = played.of("well")
    assert (result["outcome"], result["changed"], result["left_alone"]) == ("ok", False, True)
    assert before_and_after(result)[0] == before_and_after(result)[1]
    assert cards["card1"].address("eth0") == cards["card1"].planned_addresses()["eth0"]


def test_a_rescue_is_told_before_it_is_made_and_made_once(played: Played, cards: dict[str, tarvelsim.Card]) -> None:
    results = [played.of(f"former {mode}") for mode in ("checked", "done", "again", "again checked")]
    assert [result["outcome"] for result in results] == ["ok"] * 4, results
    assert [result["changed"] for result in results] == [True, True, False, False]
    assert [result["left_alone"] for result in results] == [False, False, True, True]
    # What the settings of a card say that has strayed.
    now = {"VemkEth1": f"Static {cards['lost1'].planned_addresses()['eth0']}/255.255.255.0"}
    wanted = {"VemkEth1": f"Static {HOME}/255.255.255.0"}
    assert [before_and_after(result) for result in results] == [(now, wanted)] * 2 + [(wanted, wanted)] * 2


def test_force_moves_a_card_that_is_well_and_only_once(played: Played) -> None:
    results = [played.of(f"forced {mode}") for mode in ("done", "again")]
    assert [(result["outcome"], result["changed"]) for result in results] == [("ok", True), ("ok", False)], results
    now, wanted = {"VemkEth1": f"Static {FREE}/255.255.255.0"}, {"VemkEth1": "Dhcp"}
    assert [before_and_after(result) for result in results] == [(now, wanted), (wanted, wanted)]


def test_a_rescued_card_has_what_it_was_given(played: Played, cards: dict[str, tarvelsim.Card]) -> None:
    assert played.of("former done")["answer"]["state"] == "rescued"
    assert played.of("former done")["answer"]["time"] == "2001-09-09T01:46:40Z"
    cards["lost1"].wait_address("eth0", HOME)
    assert played.of("told")["answer"]["state"] == "rescued"
    cards["lost2"].wait_address("eth0", cards["lost2"].lease("eth0"))


@pytest.mark.parametrize(
    ("name", "code", "category", "words"),
    [
        ("nothing known", 2, "usage", "no change of lost2 was made from here"),
        ("not that many", 2, "usage", "1 former settings of lost1 are known, so there is none with number 2"),
        ("taken", 2, "needs-force", f"another card has {HOME} already"),
    ],
)
def test_a_rescue_that_cannot_be_is_told_in_the_clients_words(
    played: Played, name: str, code: int, category: str, words: str
) -> None:
    result = played.of(name)
    assert (result["outcome"], result["rc"], result["category"], result["changed"]) == ("failed", code, category, False)
    assert words in result["msg"]


@pytest.mark.parametrize(
    ("name", "words"),
    [
        ("half", "parameters are required together: interface, mode"),
        ("both", "parameters are mutually exclusive: to|mode"),
        ("no mode", "missing parameter(s) required by 'address': mode"),
    ],
)
def test_options_that_do_not_go_together_are_refused(played: Played, name: str, words: str) -> None:
    assert played.of(name)["outcome"] == "failed"
    assert words in played.of(name)["msg"]
