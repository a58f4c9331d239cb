# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl ip set looks whether the address is free before a card gets it."""

import json
import subprocess
from collections.abc import Callable, Iterator
from typing import Any

import pytest
import tarvelsim
from support.ctl import Answer, Ctl
from support.snapshot import Snapshot
from support.stopping import stopped
from tarvelsim import Card
from tarvelsim.waiting import wait_for

pytestmark = pytest.mark.usefixtures("bystanders")

SPARE = "10.0.0.88"


@pytest.fixture
def spare_host(rack: list[Card]) -> Iterator[str]:
    """An address that some host has, from which no card answers."""
    change = [f"{SPARE}/24", "dev", "eth0"]
    rack[1].inside.run(["ip", "address", "add", *change])
    yield SPARE
    rack[1].inside.run(["ip", "address", "delete", *change])


def neighbours(*words: str) -> list[dict[str, Any]]:
    """What ip does with, or tells of, this machine's table of link-layer addresses."""
    command = ["ip", "-json", "neighbour", *words, "dev", "lan0"]
    told = subprocess.run(command, capture_output=True, text=True, check=True)
    found: list[dict[str, Any]] = json.loads(told.stdout or "[]")
    return found


def states(address: str) -> list[str]:
    return [state for entry in neighbours("show", address) for state in entry["state"]]


def link_address(card: Card) -> str:
    address, *_ = json.loads(card.inside.run(["ip", "-json", "link", "show", "eth0"]).stdout)
    return str(address["address"])


Known = Callable[[Card, str], None]


@pytest.fixture
def known() -> Iterator[Known]:
    """Writes into the table that a host has the spare address, in a state such as "stale"."""

    def write(card: Card, state: str) -> None:
        neighbours("replace", SPARE, "lladdr", link_address(card), "nud", state)

    yield write
    if neighbours("show", SPARE):
        neighbours("delete", SPARE)


def set_eth1(ctl: Ctl, address: str, *globals: str, gateway: str = "") -> Answer:
    return ctl.json(*globals, "ip", "set", "--if", "VemkEth1", "--static", f"{address}/24{gateway}", "rack1")


def expect_refused(answer: Answer, state: str, why: str) -> None:
    assert (answer.code, answer.result["category"], answer.result["address_state"]) == (2, "needs-force", state)
    assert why in answer.result["hint"]
    assert answer.result["changed"] is False


def test_no_card_gets_the_address_of_another(ctl: Ctl, rack: list[Card]) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, rack[1].address("eth0") or ""), "in use", "another card has")
    assert Snapshot(rack) == before


def test_force_gives_a_card_the_address_of_another(ctl: Ctl, scratch: Card, rack: list[Card]) -> None:
    others = rack[1:]
    before = Snapshot(others)
    address = rack[1].address("eth0") or ""
    answer = set_eth1(ctl, address, "--force")
    assert (answer.code, answer.result["address_state"]) == (0, "in use")
    assert "another card has" in answer.err
    assert scratch.address("eth0") == address
    assert Snapshot(others) == before


def test_no_card_gets_the_address_of_a_host(ctl: Ctl, rack: list[Card], spare_host: str) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, spare_host), "in use", "a host has")
    assert Snapshot(rack) == before


def test_a_card_that_does_not_answer_is_still_a_host(ctl: Ctl, rack: list[Card]) -> None:
    before = Snapshot(rack)
    answer = set_eth1(ctl, rack[1].address("eth0") or "", "--no-probe")
    expect_refused(answer, "in use", "a host has")
    assert Snapshot(rack) == before


def test_no_card_gets_this_machines_address(ctl: Ctl, lan: tarvelsim.Lan, rack: list[Card]) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, lan.address("lan0")), "in use", "this machine's own address")
    assert Snapshot(rack) == before


def test_an_address_of_no_network_here_is_not_checked(ctl: Ctl, rack: list[Card]) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, "192.0.2.7"), "not checked", "none of this machine's networks")
    assert Snapshot(rack) == before


def test_a_free_address_is_called_so(ctl: Ctl, scratch: Card) -> None:
    answer = set_eth1(ctl, "10.0.0.89")
    assert (answer.code, answer.result["address_state"]) == (0, "free")


@pytest.fixture(params=["prohibit 10.0.0.90", "10.0.0.90 via 10.0.0.91 dev lan0"])
def unaskable(request: pytest.FixtureRequest) -> Iterator[str]:
    """A free address on the link that this machine cannot ask for: it sends nothing there, or asks another host."""
    route = str(request.param).split()
    subprocess.run(["ip", "route", "add", *route], check=True)
    yield "10.0.0.90"
    subprocess.run(["ip", "route", "delete", *route], check=True)


def test_an_address_that_nobody_was_asked_for_is_not_called_free(ctl: Ctl, rack: list[Card], unaskable: str) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, unaskable), "not checked", f"whether {unaskable} is free could not be checked")
    assert Snapshot(rack) == before


def test_a_card_keeps_its_address(ctl: Ctl, scratch: Card) -> None:
    answer = set_eth1(ctl, scratch.address("eth0") or "", gateway=",10.0.0.1")
    assert (answer.code, answer.result["address_state"]) == (0, "its own")


def test_a_card_keeps_its_address_that_it_answers_from_on_both_networks(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["ip", "address", "flush", "dev", "eth1"])
    answer = set_eth1(ctl, scratch.address("eth0") or "", gateway=",10.0.0.1")
    assert (answer.code, answer.result["address_state"]) == (0, "its own")


def test_an_address_that_another_card_answers_from_on_the_other_network_is_in_use(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[0].address("eth0") or ""
    rack[1].inside.run(["ip", "address", "flush", "dev", "eth1"])
    rack[1].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth1"])
    before = Snapshot(rack)
    try:
        expect_refused(set_eth1(ctl, address, gateway=",10.0.0.1"), "in use", "another card has")
        assert Snapshot(rack) == before
    finally:
        rack[1].reset()


@pytest.fixture
def taken_over(scratch: Card, rack: list[Card]) -> Iterator[str]:
    """The address of a card whose cable is out, which another has meanwhile."""
    address = scratch.address("eth0") or ""
    scratch.set_link("eth0", False)
    rack[1].inside.run(["ip", "address", "flush", "dev", "eth0"])
    rack[1].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth0"])
    yield address
    scratch.set_link("eth0", True)
    rack[1].reset()


@pytest.mark.parametrize(("options", "who"), [((), "another card has"), (("--no-probe",), "a host has")])
def test_what_a_card_only_says_that_it_has_is_not_its_own(
    ctl: Ctl, rack: list[Card], taken_over: str, options: tuple[str, ...], who: str
) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, taken_over, *options, gateway=",10.0.0.1"), "in use", who)
    assert Snapshot(rack) == before


def test_an_address_of_the_other_interface_needs_force(ctl: Ctl, rack: list[Card]) -> None:
    before = Snapshot(rack)
    expect_refused(set_eth1(ctl, rack[0].address("eth1") or ""), "in use", "is the address of VemkEth2")
    assert Snapshot(rack) == before


@pytest.mark.usefixtures("untouched")
def test_a_dry_run_asks_nobody(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[1].records.log_mark()
    answer = set_eth1(ctl, rack[1].address("eth0") or "", "--dry-run")
    assert (answer.code, answer.result["address_state"]) == (0, "not checked")
    assert not any("Unknown command" in line.text for line in rack[1].records.log_lines(mark))


def test_a_host_that_has_gone_leaves_its_address_free(ctl: Ctl, scratch: Card, rack: list[Card], known: Known) -> None:
    known(rack[1], "stale")
    assert set_eth1(ctl, SPARE).result["address_state"] == "free"


def test_a_host_that_the_table_has_forgotten_leaves_its_address_free(
    ctl: Ctl, scratch: Card, rack: list[Card], known: Known
) -> None:
    """The kernel asks for it in vain, and then drops the entry before anybody has looked again."""
    known(rack[1], "stale")
    running = ctl.start("-o", "json", "ip", "set", "--if", "VemkEth1", "--static", f"{SPARE}/24", "rack1")
    wait_for(lambda: states(SPARE) != ["STALE"], 60, lambda: "nothing is sent to the address")
    neighbours("delete", SPARE)
    out, _ = running.communicate(timeout=120)
    assert Answer(running.returncode, out, "").result["address_state"] == "free"


def test_a_second_card_that_comes_while_the_address_is_looked_at_is_seen(
    ctl: Ctl, rack: list[Card], scratch: Card, twin: Card, known: Known
) -> None:
    """The kernel takes more than five seconds to give up a host that it knows."""
    before = Snapshot([*rack, twin])
    known(rack[1], "stale")
    with stopped(twin):
        running = ctl.start("-o", "json", "ip", "set", "--if", "VemkEth1", "--static", f"{SPARE}/24", "rack1")
        wait_for(lambda: states(SPARE) != ["STALE"], 60, lambda: "nothing is sent to the address")
    out, _ = running.communicate(timeout=120)
    answer = Answer(running.returncode, out, "")
    assert (answer.code, answer.result["category"]) == (11, "ambiguous")
    assert Snapshot([*rack, twin]) == before


@pytest.mark.usefixtures("untouched")
def test_a_host_that_is_known_from_before_is_one(ctl: Ctl, rack: list[Card], known: Known, spare_host: str) -> None:
    known(rack[1], "stale")
    expect_refused(set_eth1(ctl, spare_host), "in use", "a host has")


def test_what_the_card_itself_had_a_moment_ago_is_free(ctl: Ctl, scratch: Card, known: Known) -> None:
    known(scratch, "reachable")
    assert set_eth1(ctl, SPARE).result["address_state"] == "free"


@pytest.mark.usefixtures("untouched")
def test_what_another_had_a_moment_ago_is_not(ctl: Ctl, rack: list[Card], known: Known) -> None:
    known(rack[1], "reachable")
    expect_refused(set_eth1(ctl, SPARE), "in use", "a host has")
