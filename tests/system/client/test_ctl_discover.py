# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl discover"""

import signal
import subprocess
from collections.abc import Iterator

import pytest
from support.ctl import Ctl, interrupt
from tarvelsim import Card


def test_every_card_is_found_on_both_networks(ctl: Ctl, rack: list[Card]) -> None:
    found = {result["target"] for result in ctl.json("discover").results}
    for card in rack:
        assert {card.address("eth0"), card.address("eth1")} <= found


def test_only_the_named_interface_is_used(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("discover", "-i", "lan1")
    assert {result["interface"] for result in answer.results} == {"lan1"}
    assert all(result["target"].startswith("10.0.1.") for result in answer.results)


def test_the_expected_number_ends_it_at_once(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("discover", "-i", "lan0", "--expect", "2")
    assert answer.code == 0
    assert len(answer.results) == 2


def test_too_few_cards_are_a_difference(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("discover", "-i", "lan0", "--expect", "200")
    assert answer.code == 9
    assert [result["category"] for result in answer.results if not result["ok"]] == ["too-few"]
    assert len([result for result in answer.results if result["ok"]]) >= len(rack)


def test_names_are_mapped_to_addresses(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("discover", "-i", "lan0", "--names", "rack[7-9]")
    names = {result["target"]: result["name"] for result in answer.results}
    assert names[rack[6].address("eth0")] == "rack7"
    assert names[rack[7].address("eth0")] == "rack8"
    assert "rack9" not in names.values()


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
    assert named == {"rack1", "rack2", "rack3", "rack4"}
    (shortfall,) = [result for result in answer.results if not result["ok"]]
    assert {row["name"] for row in shortfall["silent"]} == {"rack5", "rack6", "rack7", "rack8"}


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
    answer = ctl("-i", "lan0", "discover", "--names", "rack1")
    assert "rack1: two cards have this name" in answer.err
    assert f"{twin.address('eth0')} on lan0" in answer.err


def test_one_card_by_a_name_is_no_warning(ctl: Ctl, rack: list[Card]) -> None:
    assert "warning" not in ctl("-i", "lan0", "discover", "--names", "rack1").err


def test_a_card_with_a_wrong_address_is_heard(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["ip", "addr", "flush", "dev", "eth0"])
    scratch.inside.run(["ip", "addr", "add", "172.16.5.5/24", "dev", "eth0"])
    found = {result["target"]: result["reachable"] for result in ctl.json("discover", "-i", "lan0").results}
    assert found["172.16.5.5"] is False


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
    results = ctl.json("discover").results
    assert {result["reachable"] for result in results if result["target"] == "172.16.5.5"} == {True}
    assert {result["interface"] for result in results} == {"lan0", "lan1"}


def test_a_card_without_any_address_is_heard(ctl: Ctl, scratch: Card) -> None:
    for device in ("eth0", "eth1"):  # without one of its own, the other's address would serve
        scratch.inside.run(["ip", "addr", "flush", "dev", device])
    assert "0.0.0.0" in {result["target"] for result in ctl.json("discover", "-i", "lan0").results}


def test_a_dry_run_shows_both_probes(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[0].records.log_mark()
    probes = [result["frame"] for result in ctl.json("--dry-run", "discover").results]
    assert [probe.split()[2] for probe in probes] == ["f07f0001", "03000001"]
    assert rack[0].records.log_lines(mark) == []


def test_an_interface_that_does_not_exist_is_exit_6(ctl: Ctl) -> None:
    answer = ctl("discover", "-i", "nowhere0")
    assert answer.code == 6
    assert "nowhere0" in answer.err
