# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A card answers from an address that leads to another."""

import signal
import subprocess
from collections.abc import Iterator

import pytest
from support.ctl import Ctl
from support.snapshot import Snapshot
from tarvelsim import Card

NTP = ("time", "set", "--ntp", "10.0.0.99")
UPGRADE = ("firmware", "upgrade", "FILE")


@pytest.fixture
def strayed(rack: list[Card]) -> Iterator[str]:
    """rack1 is on the first network only, with the address that rack2 has on the second."""
    address = rack[1].address("eth1") or ""
    inside = rack[0].inside
    rack[0].set_link("eth1", False)
    inside.run(["ip", "address", "flush", "dev", "eth1"])
    inside.run(["ip", "address", "flush", "dev", "eth0"])
    inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth0"])
    yield address
    rack[0].set_link("eth1", True)
    rack[0].reset()
    rack[1].reset()


@pytest.fixture
def same_network_twice(rack: list[Card]) -> Iterator[str]:
    """This machine has the first network on both interfaces; rack2, on the second, has the address of rack1."""
    address = rack[0].address("eth0") or ""
    subprocess.run(["ip", "address", "add", "10.0.0.2/24", "dev", "lan1"], check=True)
    rack[0].set_link("eth1", False)  # a host answers there, too, who has that address
    rack[1].set_link("eth0", False)
    rack[1].inside.run(["ip", "address", "flush", "dev", "eth0"])
    rack[1].inside.run(["ip", "address", "flush", "dev", "eth1"])
    rack[1].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth1"])
    subprocess.run(["ip", "neighbour", "flush", "dev", "lan1"], check=True)  # who had it there a test before
    yield address
    subprocess.run(["ip", "address", "del", "10.0.0.2/24", "dev", "lan1"], check=True)
    rack[0].set_link("eth1", True)
    rack[1].set_link("eth0", True)
    rack[0].reset()
    rack[1].reset()


def words_of(words: tuple[str, ...], firmware: str) -> list[str]:
    return [firmware if word == "FILE" else word for word in words]


@pytest.mark.parametrize("words", [NTP, UPGRADE], ids=["time", "firmware"])
def test_no_other_card_is_changed(
    ctl: Ctl, rack: list[Card], strayed: str, firmware: str, words: tuple[str, ...]
) -> None:
    before = Snapshot(rack)
    answer = ctl.json(*words_of(words, firmware), "rack1")
    assert (answer.code, answer.result["category"]) == (6, "no-address")
    assert f"{strayed} on lan0" in answer.result["hint"]
    assert Snapshot(rack) == before


@pytest.mark.usefixtures("strayed")
@pytest.mark.parametrize("words", [("versions",), ("time", "get"), ("status",)], ids=["versions", "time", "status"])
def test_no_other_card_is_read(ctl: Ctl, words: tuple[str, ...]) -> None:
    answer = ctl.json("--timeout", "5", *words, "rack1")
    assert (answer.code, answer.result["category"]) == (6, "no-address")


@pytest.mark.usefixtures("strayed")
def test_no_other_card_is_looked_at_where_a_silent_one_was_heard(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("--timeout", "1", "versions", "rack1").code == 6
    rack[0].daemon.kill(signal.SIGSTOP)
    try:
        result = ctl.json("--timeout", "1", "versions", "rack1").result
    finally:
        rack[0].daemon.kill(signal.SIGCONT)
    assert (result["category"], result["last_address"], result["there_now"]) == ("not-heard", None, None)


@pytest.mark.usefixtures("strayed")
def test_no_other_card_is_waited_for(ctl: Ctl) -> None:
    answer = ctl.json("--timeout", "1", "wait", "--for", "idle", "--wait-time", "2", "rack1")
    assert answer.result["state"] in ("up", "not found")  # heard, or too slow to be
    assert "address_from" not in answer.result


def test_a_reboot_is_seen_though_the_address_leads_to_another(ctl: Ctl, strayed: str) -> None:
    answer = ctl.json("--timeout", "2", "reboot", "--wait", "--wait-time", "60", "rack1")
    assert answer.result["category"] != "stayed-up"
    assert answer.code == 0


def test_a_card_is_read_that_answers_on_both_networks_from_one_address(ctl: Ctl, rack: list[Card]) -> None:
    """As one does whose second port has no address."""
    rack[0].inside.run(["ip", "address", "flush", "dev", "eth1"])
    try:
        assert ctl.json("versions", "rack1").code == 0
        assert ctl.json_checked(*NTP, "rack1").code == 0
    finally:
        rack[0].reset()


def test_a_connection_goes_to_the_interface_that_the_card_was_heard_on(
    ctl: Ctl, rack: list[Card], same_network_twice: str, firmware: str
) -> None:
    before = Snapshot([rack[0]])
    assert ctl.json("--no-probe", "firmware", "upgrade", firmware, "rack2").code == 0
    assert Snapshot([rack[0]]) == before
    assert rack[1].inside.read("/etc/pnr/kernel").strip() == "KERN-7.0.0"


def test_an_address_that_a_card_answers_from_in_the_wrong_network_is_refused(
    ctl: Ctl, rack: list[Card], strayed: str
) -> None:
    before = Snapshot(rack)
    answer = ctl.json(*NTP, strayed)
    assert (answer.code, answer.result["checked"]) == (11, False)
    assert Snapshot(rack) == before


def test_an_address_of_one_network_on_two_interfaces_is_refused(
    ctl: Ctl, rack: list[Card], same_network_twice: str
) -> None:
    before = Snapshot(rack[:2])
    answer = ctl.json(*NTP, same_network_twice)
    assert (answer.code, answer.result["checked"]) == (11, False)
    assert Snapshot(rack[:2]) == before


def test_the_name_of_a_card_tells_it_from_another_of_its_address(
    ctl: Ctl, rack: list[Card], same_network_twice: str
) -> None:
    before = Snapshot(rack[:1])
    answer = ctl.json_checked(*NTP, same_network_twice, "rack2")
    assert [(result["code"], result["checked"]) for result in answer.results] == [(11, False), (0, True)]
    assert Snapshot(rack[:1]) == before


def test_an_address_is_reached_on_the_interface_that_was_asked(
    ctl: Ctl, rack: list[Card], same_network_twice: str
) -> None:
    """The routes lead to rack1."""
    before = Snapshot(rack[:1])
    assert ctl.json_checked("-i", "lan1", *NTP, same_network_twice).code == 0
    assert Snapshot(rack[:1]) == before


@pytest.mark.usefixtures("deaf_interface")
@pytest.mark.parametrize("by_name", [True, False], ids=["name", "address"])
def test_nothing_is_changed_if_an_interface_takes_no_broadcast(
    ctl: Ctl, rack: list[Card], twin: Card, by_name: bool
) -> None:
    """The second card of that name is on its network only."""
    twin.set_link("eth0", False)
    before = Snapshot([*rack, twin])
    target = "rack1" if by_name else rack[0].address("eth0") or ""
    answer = ctl.json(*NTP, target)
    assert (answer.code, answer.result["category"], answer.result["changed"]) == (6, "no-network", False)
    assert answer.result["hint"].startswith("lan1 took no broadcast")
    assert Snapshot([*rack, twin]) == before
    assert ctl.json("-i", "lan0", "--dry-run", *NTP, target).code == 0


@pytest.mark.usefixtures("deaf_interface", "rack")
def test_an_interface_that_takes_no_broadcast_is_told_once_to_who_reads(ctl: Ctl) -> None:
    answer = ctl("versions", "rack1", "rack2")
    assert answer.code == 0
    assert answer.err.count("warning: lan1 took no broadcast") == 1


def test_who_is_refused_already_is_no_reason_to_probe(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[0].records.log_mark()
    assert ctl.json("--timeout", "0.5", *NTP, "nobody").code == 5
    assert ctl("versions", "rack1").code == 0  # which it answers after all that came before
    assert not any("Unknown command" in line.text for line in rack[0].records.log_lines(mark))


def test_who_answers_from_an_address_that_a_card_only_says_that_it_has_is_another(ctl: Ctl, scratches: list[Card]) -> None:
    address = scratches[0].address("eth1") or ""
    scratches[0].set_link("eth1", False)
    scratches[2].inside.run(["ip", "address", "flush", "dev", "eth1"])
    scratches[2].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth1"])
    try:
        answer = ctl.json(*NTP, address, "rack1")
    finally:
        scratches[0].set_link("eth1", True)
    assert (answer.code, [result["target"] for result in answer.results]) == (0, [address, "rack1"])
    for card in (scratches[0], scratches[2]):
        assert card.inside.uci("get", "system.ntp.server") == "10.0.0.99"
