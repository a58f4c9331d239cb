# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl ip rescue: what it remembers, and whom it leaves alone"""

import pytest
from support.ctl import Answer, Ctl
from support.snapshot import Snapshot
from tarvelsim import Card

pytestmark = pytest.mark.usefixtures("bystanders")

ETH2 = ("--if", "VemkEth2")
FIRST = "VemkEth2 Static =10.0.1.71 =255.255.255.0 - 1000000000\n"
SECOND = "VemkEth1 Static =10.0.0.72 =255.255.255.0 =10.0.0.1 900000000\n"


def test_a_card_that_works_is_left_alone(ctl: Ctl, rack: list[Card]) -> None:
    ctl.remember("ip-rack1", FIRST)
    before = Snapshot(rack)
    for words in (("ip", "rescue", "rack1"), ("ip", "rescue", *ETH2, "--dhcp", "rack1")):
        answer = ctl.json(*words)
        assert (answer.code, answer.result["category"]) == (2, "needs-force")
        assert "address that works here" in answer.result["hint"]
        assert answer.result["reachable"] is True
    assert Snapshot(rack) == before


def test_force_moves_a_card_that_works(ctl: Ctl, scratch: Card) -> None:
    ctl.remember("ip-rack1", FIRST)
    answer = ctl.json("--force", "ip", "rescue", "rack1")
    assert (answer.code, answer.result["state"]) == (0, "rescued")
    scratch.wait_address("eth1", "10.0.1.71")


@pytest.mark.usefixtures("untouched")
def test_from_and_to_and_age_are_shown(ctl: Ctl, scratch: Card) -> None:
    ctl.remember("ip-rack1", FIRST)
    former = scratch.address("eth1")
    result = ctl.json("--dry-run", "ip", "rescue", "rack1").result
    assert result["now"] == f"Static {former}/255.255.255.0"
    assert result["reachable"] is True
    assert result["wanted"] == "Static 10.0.1.71/255.255.255.0"
    assert result["time"] == "2001-09-09T01:46:40Z"
    assert result["age"].endswith("days")


@pytest.fixture
def strayed(scratch: Card) -> Card:
    """A card without an address that works here."""
    scratch.inside.run(["ip", "address", "flush", "dev", "eth0"])
    scratch.inside.run(["ip", "address", "add", "172.16.5.5/24", "dev", "eth0"])
    return scratch


def rescue(ctl: Ctl, address: str, *globals: str) -> Answer:
    """To a remembered address."""
    ctl.remember("ip-rack1", f"VemkEth1 Static ={address} =255.255.255.0 -\n")
    return ctl.json("-i", "lan0", *globals, "ip", "rescue", "rack1")


def test_a_card_without_an_address_here_is_rescued_without_force(ctl: Ctl, strayed: Card) -> None:
    free = "10.0.0.73"
    answer = rescue(ctl, free)
    assert (answer.code, answer.result["state"], answer.result["address_state"]) == (0, "rescued", "free")
    assert answer.result["reachable"] is False
    strayed.wait_address("eth0", free)


def test_no_card_is_rescued_to_the_address_of_another(ctl: Ctl, strayed: Card, rack: list[Card]) -> None:
    taken = rack[1].address("eth0") or ""
    before = Snapshot(rack)
    answer = rescue(ctl, taken)
    assert (answer.code, answer.result["category"], answer.result["address_state"]) == (2, "needs-force", "in use")
    assert f"another card has {taken} already" in answer.result["hint"]
    assert answer.result["changed"] is False
    assert strayed.address("eth0") == "172.16.5.5"
    assert Snapshot(rack) == before


def test_force_rescues_a_card_to_the_address_of_another(ctl: Ctl, strayed: Card, rack: list[Card]) -> None:
    taken = rack[1].address("eth0") or ""
    answer = rescue(ctl, taken, "--force")
    assert (answer.code, answer.result["state"], answer.result["address_state"]) == (0, "rescued", "in use")
    assert f"another card has {taken} already" in answer.err
    strayed.wait_address("eth0", taken)


def test_a_rescue_without_a_probe_still_sees_a_host(ctl: Ctl, strayed: Card, rack: list[Card]) -> None:
    answer = rescue(ctl, rack[1].address("eth0") or "", "--no-probe")
    assert (answer.code, answer.result["address_state"]) == (2, "in use")
    assert "a host has" in answer.result["hint"]
    assert strayed.address("eth0") == "172.16.5.5"


@pytest.mark.usefixtures("untouched")
def test_the_list_asks_no_card(ctl: Ctl, rack: list[Card]) -> None:
    ctl.remember("ip-rack1", FIRST + SECOND)
    mark = rack[0].records.log_mark()
    answer = ctl.json("ip", "rescue", "--list", "rack1")
    assert answer.code == 0
    entries = answer.result["former_settings"]
    assert [(entry["number"], entry["interface"], entry["settings"], entry["time"]) for entry in entries] == [
        (1, "VemkEth2", "Static 10.0.1.71/255.255.255.0", "2001-09-09T01:46:40Z"),
        (2, "VemkEth1", "Static 10.0.0.72/255.255.255.0 gateway 10.0.0.1", "1998-07-09T16:00:00Z"),
    ]
    assert rack[0].records.log_lines(mark) == []


def test_the_list_of_a_card_that_was_never_changed_is_a_usage_error(ctl: Ctl) -> None:
    assert ctl("ip", "rescue", "--list", "rack1").code == 2


def test_older_settings_are_chosen_by_their_number(ctl: Ctl, scratch: Card) -> None:
    ctl.remember("ip-rack1", FIRST + SECOND)
    assert ctl("--force", "ip", "rescue", "--to", "2", "rack1").code == 0
    scratch.wait_address("eth0", "10.0.0.72")


def test_a_number_that_is_none_changes_nothing(ctl: Ctl, rack: list[Card]) -> None:
    ctl.remember("ip-rack1", FIRST)
    before = Snapshot(rack)
    for number in ("2", "0", "x"):
        assert ctl("--force", "ip", "rescue", "--to", number, "rack1").code == 2
    assert ctl("--force", "ip", "rescue", "--to", "1", *ETH2, "--dhcp", "rack1").code == 2
    assert Snapshot(rack) == before


def test_a_file_of_old_is_the_newest_entry(ctl: Ctl, scratch: Card) -> None:
    ctl.remember("ip-rack1", "VemkEth2 Dhcp - - -\n")
    assert ctl("ip", "set", *ETH2, "--static", "10.0.1.77/24", "rack1").code == 0
    entries = ctl.json("ip", "rescue", "--list", "rack1").result["former_settings"]
    assert [entry["settings"].split("/")[0] for entry in entries] == [f"Static {scratch.planned_addresses()['eth1']}", "Dhcp"]
    assert (entries[0]["age"] is None, entries[1]["age"]) == (False, None)
