# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl discover"""

import json
import signal
import subprocess
from collections.abc import Callable, Iterator
from typing import Any

import pytest
from support.ctl import Ctl, interrupt
from tarvelsim import Card


def found(ctl: Ctl, *words: str, until: Callable[[list[dict[str, Any]]], bool]) -> list[dict[str, Any]]:
    """What is printed until the test has what it looks for, however long the cards take for it."""
    running = ctl.start("-o", "jsonl", "--timeout", "60", "discover", *words)
    results: list[dict[str, Any]] = []
    assert running.stdout
    for line in running.stdout:
        results.append(json.loads(line))
        if until(results):
            break
    interrupt(running)
    return results


def targets(results: list[dict[str, Any]]) -> set[str]:
    return {result["target"] for result in results}


def test_every_card_is_found_on_both_networks(ctl: Ctl, rack: list[Card]) -> None:
    addresses = {card.address(device) or "" for card in rack for device in ("eth0", "eth1")}
    results = found(ctl, until=lambda results: addresses <= targets(results))
    assert addresses <= targets(results)


def test_only_the_named_interface_is_used(ctl: Ctl, rack: list[Card]) -> None:
    addresses = {card.address("eth1") or "" for card in rack}
    results = found(ctl, "-i", "lan1", until=lambda results: addresses <= targets(results))
    assert {result["interface"] for result in results} == {"lan1"}
    assert all(target.startswith("10.0.1.") for target in targets(results))


def test_the_expected_number_ends_it_at_once(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("--timeout", "60", "discover", "-i", "lan0", "--expect", "2")
    assert answer.code == 0
    assert len(answer.results) == 2


def test_too_few_cards_are_a_difference(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("--timeout", "5", "discover", "-i", "lan0", "--expect", "200")
    assert answer.code == 9
    assert [result["category"] for result in answer.results if not result["ok"]] == ["too-few"]


def test_names_are_mapped_to_addresses(ctl: Ctl, rack: list[Card]) -> None:
    named = {rack[6].address("eth0"): "rack7", rack[7].address("eth0"): "rack8"}
    words = ("-i", "lan0", "--names", "rack[7-9]")
    results = found(ctl, *words, until=lambda results: len(results) == len(named))
    assert {result["target"]: result["name"] for result in results} == named


def test_stopped_cards_are_not_made_up_for_by_the_addresses_of_others(ctl: Ctl, rack: list[Card]) -> None:
    for card in rack[4:]:
        card.daemon.kill(signal.SIGSTOP)
    try:
        answer = ctl.json("discover", "--names", "rack[1-8]", "--expect", "8")
    finally:
        for card in rack[4:]:
            card.daemon.kill(signal.SIGCONT)
    assert answer.code == 9
    named = {result["name"] for result in answer.results if result["ok"] and result["name"]}
    (shortfall,) = [result for result in answer.results if not result["ok"]]
    silent = {row["name"] for row in shortfall["silent"]}
    assert {"rack5", "rack6", "rack7", "rack8"} <= silent  # others may just be slow
    assert named == {f"rack{number}" for number in range(1, 9)} - silent


def test_addresses_of_several_interfaces_count_no_cards(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl("discover", "--expect", "8")
    assert answer.code == 2
    assert "--expect counts the addresses of one interface" in answer.err


def test_a_name_is_printed_while_others_are_awaited(ctl: Ctl, rack: list[Card]) -> None:
    running = ctl.start("-o", "jsonl", "--timeout", "60", "discover", "--names", "nobody,rack1")
    assert running.stdout
    assert '"name":"rack1"' in running.stdout.readline()
    interrupt(running)


def test_a_second_answer_by_a_name_is_a_warning(ctl: Ctl, rack: list[Card], twin: Card) -> None:
    answer = ctl("-i", "lan0", "--timeout", "5", "discover", "--names", "rack1")
    assert "rack1: two cards have this name" in answer.err
    assert f"{twin.address('eth0')} on lan0" in answer.err


def test_one_card_by_a_name_is_no_warning(ctl: Ctl, rack: list[Card]) -> None:
    assert "warning" not in ctl("-i", "lan0", "discover", "--names", "rack1").err


def test_a_card_with_a_wrong_address_is_heard(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["ip", "addr", "flush", "dev", "eth0"])
    scratch.inside.run(["ip", "addr", "add", "172.16.5.5/24", "dev", "eth0"])
    results = found(ctl, "-i", "lan0", until=lambda results: "172.16.5.5" in targets(results))
    assert {result["reachable"] for result in results if result["target"] == "172.16.5.5"} == {False}


@pytest.fixture
def second_network() -> Iterator[None]:
    """This machine has an address of another network on lan0, with a name of its own."""
    subprocess.run(["ip", "address", "add", "172.16.5.1/24", "dev", "lan0", "label", "lan0:1"], check=True)
    yield
    subprocess.run(["ip", "address", "delete", "172.16.5.1/24", "dev", "lan0"], check=True)


@pytest.mark.usefixtures("second_network")
def test_every_network_of_an_interface_is_reached(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["ip", "addr", "flush", "dev", "eth0"])
    scratch.inside.run(["ip", "addr", "add", "172.16.5.5/24", "dev", "eth0"])
    wanted = {"172.16.5.5", scratch.address("eth1") or ""}
    results = found(ctl, until=lambda results: wanted <= targets(results))
    assert {result["reachable"] for result in results if result["target"] == "172.16.5.5"} == {True}
    assert {result["interface"] for result in results} == {"lan0", "lan1"}


def test_a_card_without_any_address_is_heard(ctl: Ctl, scratch: Card) -> None:
    for device in ("eth0", "eth1"):  # without one of its own, the other's address would serve
        scratch.inside.run(["ip", "addr", "flush", "dev", device])
    assert "0.0.0.0" in targets(found(ctl, "-i", "lan0", until=lambda results: "0.0.0.0" in targets(results)))


def test_a_dry_run_shows_both_probes(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[0].records.log_mark()
    probes = [result["frame"] for result in ctl.json("--dry-run", "discover").results]
    assert [probe.split()[2] for probe in probes] == ["f07f0001", "03000001"]
    assert rack[0].records.log_lines(mark) == []


def test_an_interface_that_does_not_exist_is_exit_6(ctl: Ctl) -> None:
    answer = ctl("discover", "-i", "nowhere0")
    assert answer.code == 6
    assert "nowhere0" in answer.err
