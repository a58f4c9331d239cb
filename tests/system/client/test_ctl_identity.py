# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Nothing is changed as long as another card could be meant."""

import subprocess
import time

import pytest
from support.ctl import Answer, Ctl
from support.snapshot import Snapshot
from support.stopping import stopped
from tarvelsim import Card

pytestmark = pytest.mark.usefixtures("bystanders")

ETH2 = ("--if", "VemkEth2")
CHANGES = [
    ("ip", "set", *ETH2, "--dhcp"),
    ("ip", "rescue", *ETH2, "--dhcp"),
    ("reboot",),
    ("time", "set", "--ntp", "10.0.0.99"),
    ("firmware", "upgrade", "FILE"),
]

LONGEST = 5.0  # seconds: what is older is found out again before a change


def with_file(words: tuple[str, ...], firmware: str) -> list[str]:
    return [firmware if word == "FILE" else word for word in words]


def expect_refused(answer: Answer, *senders: str | None) -> None:
    assert {result["code"] for result in answer.results} == {11}
    assert {result["category"] for result in answer.results} == {"ambiguous"}
    for sender in senders:
        assert all(str(sender) in result["hint"] for result in answer.results)


@pytest.mark.parametrize("words", CHANGES)
def test_two_cards_with_one_name_are_left_alone(
    ctl: Ctl, rack: list[Card], twin: Card, firmware: str, words: tuple[str, ...]
) -> None:
    before = Snapshot([*rack, twin])
    answer = ctl.json(*with_file(words, firmware), "rack1")
    expect_refused(answer, rack[0].address("eth0"), twin.address("eth0"))
    assert answer.code == 11
    assert Snapshot([*rack, twin]) == before


def test_force_goes_over_a_second_card(ctl: Ctl, scratch: Card, twin: Card) -> None:
    answer = ctl.json("--force", "-i", "lan0", "ip", "set", *ETH2, "--dhcp", "rack1")
    assert answer.code == 0
    assert "two cards have this name" in answer.err


def waiting_behind(ctl: Ctl, other: Card, *words: str) -> subprocess.Popen[str]:
    """An upgrade of one card after the other, which stands still at the first, and has done so for long."""
    other.inside.hold("fwupgrade")
    running = ctl.start("-o", "json", "firmware", "upgrade", "--batch", "1", *words)
    other.records.wait_call("fwupgrade", timeout=60)
    return running


def release(running: subprocess.Popen[str], other: Card) -> Answer:
    time.sleep(LONGEST)
    other.inside.release("fwupgrade")
    out, err = running.communicate(timeout=120)
    other.reset()
    return Answer(running.returncode, out, err)


def test_a_second_card_that_comes_while_the_first_waits_for_its_turn_is_seen(
    ctl: Ctl, rack: list[Card], twin: Card, firmware: str
) -> None:
    before = Snapshot([rack[0], twin])
    with stopped(twin):
        running = waiting_behind(ctl, rack[1], firmware, "rack2", "rack1")
    answer = release(running, rack[1])
    assert [result["code"] for result in answer.results] == [0, 11]
    assert "two cards have this name" in answer.results[1]["hint"]
    assert (answer.results[1]["changed"], answer.results[1]["checked"]) == (False, False)
    assert Snapshot([rack[0], twin]) == before


def test_a_second_card_with_an_address_that_comes_meanwhile_is_seen(
    ctl: Ctl, rack: list[Card], scratches: list[Card], firmware: str
) -> None:
    address = rack[0].address("eth0") or ""
    running = waiting_behind(ctl, rack[1], firmware, "rack2", address)
    rack[2].inside.run(["ip", "address", "flush", "dev", "eth0"])
    rack[2].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth0"])
    before = Snapshot([rack[0], rack[2]])
    answer = release(running, rack[1])
    assert [result["code"] for result in answer.results] == [0, 11]
    assert Snapshot([rack[0], rack[2]]) == before


def test_of_a_card_that_falls_silent_before_its_turn_it_is_told_where_it_was(
    ctl: Ctl, rack: list[Card], firmware: str
) -> None:
    ctl.remember("heard", f"rack1 {rack[0].address('eth0')} 1000000000\n")
    before = Snapshot(rack[:1])
    running = waiting_behind(ctl, rack[1], firmware, "rack2", "rack1")
    with stopped(rack[0]):
        answer = release(running, rack[1])
    silent = answer.results[1]
    assert (silent["code"], silent["category"], silent["changed"]) == (5, "not-heard", False)
    assert silent["last_address"] == rack[0].address("eth0")
    assert {"last_heard", "there_now"} <= silent.keys()
    assert Snapshot(rack[:1]) == before


def test_a_card_that_is_still_the_only_one_gets_its_turn(ctl: Ctl, scratches: list[Card], firmware: str) -> None:
    running = waiting_behind(ctl, scratches[1], firmware, "rack2", "rack1", scratches[2].address("eth0") or "")
    answer = release(running, scratches[1])
    assert [result["code"] for result in answer.results] == [0] * 3


@pytest.mark.usefixtures("doubled")
@pytest.mark.parametrize("words", [words for words in CHANGES if words[0] in ("time", "firmware")])
def test_two_names_of_one_address_are_both_refused(
    ctl: Ctl, rack: list[Card], firmware: str, words: tuple[str, ...]
) -> None:
    """Also where the probe, which sees it from its two answers, is left out."""
    before = Snapshot(rack)
    answer = ctl.json("-i", "lan0", "--no-probe", *with_file(words, firmware), "rack[1-2]")
    expect_refused(answer, rack[0].address("eth0"))
    assert Snapshot(rack) == before


def test_a_shared_address_is_seen_by_its_two_answers(ctl: Ctl, rack: list[Card], doubled: str, firmware: str) -> None:
    before = Snapshot(rack)
    answer = ctl.json("firmware", "upgrade", firmware, doubled)
    expect_refused(answer, doubled)
    assert Snapshot(rack) == before


def test_the_address_of_one_card_was_checked(ctl: Ctl, scratch: Card, firmware: str) -> None:
    assert ctl.json_checked("firmware", "upload", firmware, "rack1").code == 0


def test_without_the_probe_no_address_is_checked(ctl: Ctl, scratch: Card, firmware: str) -> None:
    mark = scratch.records.log_mark()
    answer = ctl.json("--no-probe", "firmware", "upload", firmware, scratch.address("eth0") or "")
    assert (answer.code, answer.result["checked"]) == (0, False)
    assert not any("Unknown command" in line.text for line in scratch.records.log_lines(mark))


@pytest.mark.usefixtures("untouched")
def test_a_dry_run_does_not_probe(ctl: Ctl, rack: list[Card], firmware: str) -> None:
    mark = rack[0].records.log_mark()
    answer = ctl.json("--dry-run", "firmware", "upload", firmware, "rack1")
    assert answer.result["checked"] is False
    assert not any("Unknown command" in line.text for line in rack[0].records.log_lines(mark))


@pytest.mark.parametrize("other", ["address", "second address", "port"])
def test_a_card_that_is_given_twice_is_one_job(ctl: Ctl, scratch: Card, firmware: str, other: str) -> None:
    address = scratch.address("eth0") or ""
    again = {"address": address, "second address": scratch.address("eth1") or "", "port": f"{address}:50003"}[other]
    mark = scratch.records.calls_mark()
    answer = ctl.json("-i", "lan0", "firmware", "upgrade", firmware, "rack1", again)  # not heard from the second
    assert answer.code == 0
    assert answer.result["target"] == "rack1"
    assert f"{again} is rack1" in answer.err
    assert len(scratch.records.calls("fwupgrade", since=mark)) == 1


@pytest.mark.parametrize("words", [words for words in CHANGES if words[0] in ("time", "firmware")])
def test_a_stale_line_of_the_groups_file_changes_nothing(
    ctl: Ctl, rack: list[Card], firmware: str, words: tuple[str, ...]
) -> None:
    (ctl.config / "groups").write_text(f"rack1 {rack[2].address('eth0')}\n")
    before = Snapshot(rack)
    answer = ctl.json("-i", "lan0", *with_file(words, firmware), "rack1")
    expect_refused(answer, rack[2].address("eth0"), f"rack1 {rack[0].address('eth0')}")
    assert Snapshot(rack) == before


def test_a_stale_line_is_not_corrected_with_an_address_that_leads_nowhere(ctl: Ctl, scratch: Card) -> None:
    (ctl.config / "groups").write_text("rack1 10.0.0.77\n")
    scratch.inside.run(["ip", "address", "flush", "dev", "eth0"])
    answer = ctl.json("-i", "lan0", "time", "set", "--ntp", "10.0.0.9", "rack1")
    expect_refused(answer, "It has no address here that could stand there")
    assert "right line" not in answer.err


def test_force_does_not_go_over_a_stale_line(ctl: Ctl, rack: list[Card]) -> None:
    (ctl.config / "groups").write_text(f"rack1 {rack[2].address('eth0')}\n")
    before = Snapshot(rack)
    answer = ctl.json("--force", "-i", "lan0", "time", "set", "--ntp", "10.0.0.9", "rack1")
    expect_refused(answer, "nothing was sent, also with --force")
    assert answer.result["checked"] is False
    assert Snapshot(rack) == before


def test_a_stale_name_of_the_groups_file_changes_nothing(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[2].address("eth0") or ""
    (ctl.config / "groups").write_text(f"rack1 {address}\n")
    before = Snapshot(rack)
    expect_refused(ctl.json("ip", "set", *ETH2, "--dhcp", address), address)
    assert Snapshot(rack) == before


def test_an_address_that_a_card_only_says_that_it_has_does_not_make_a_note_true(
    ctl: Ctl, scratches: list[Card]
) -> None:
    address = scratches[0].address("eth1") or ""
    (ctl.config / "groups").write_text(f"rack1 {address}\n")
    scratches[0].set_link("eth1", False)
    scratches[2].inside.run(["ip", "address", "flush", "dev", "eth1"])
    scratches[2].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth1"])
    before = Snapshot(scratches)
    try:
        expect_refused(ctl.json("--timeout", "2", "time", "set", "--ntp", "10.0.0.9", "rack1"), address)
        expect_refused(ctl.json("--timeout", "2", "reboot", address), address)
    finally:
        scratches[0].set_link("eth1", True)
    assert Snapshot(scratches) == before


@pytest.mark.usefixtures("untouched")
def test_a_line_of_the_groups_file_is_believed_for_reading(ctl: Ctl, rack: list[Card]) -> None:
    (ctl.config / "groups").write_text(f"rack1 {rack[2].address('eth0')}\n")
    answer = ctl.json("versions", "rack1", "rack2")
    assert answer.code == 0
    assert [result.get("address_from") for result in answer.results] == ["groups", "lookup"]


def test_a_true_line_of_the_groups_file_does_no_harm(ctl: Ctl, scratch: Card, firmware: str) -> None:
    (ctl.config / "groups").write_text(f"rack1 {scratch.address('eth0')}\n")
    assert ctl.json("firmware", "upload", firmware, "rack1").code == 0


def test_an_unheard_name_is_changed_only_if_the_groups_file_is_trusted(
    ctl: Ctl, scratch: Card, firmware: str
) -> None:
    (ctl.config / "groups").write_text(f"routed {scratch.address('eth0')}\n")
    words = ("--timeout", "3", "firmware", "upload", firmware, "routed")
    before = Snapshot([scratch])
    answer = ctl.json(*words)
    assert (answer.code, "--trust-groups" in answer.result["hint"]) == (5, True)
    assert Snapshot([scratch]) == before
    assert ctl.json("--timeout", "5", "--trust-groups", *words[2:]).code == 0


def test_reading_from_a_name_of_two_cards_warns_of_the_second(ctl: Ctl, rack: list[Card], twin: Card) -> None:
    """It may come too late to be seen; a name of nobody keeps this run waiting for it."""
    before = Snapshot([*rack, twin])
    answer = ctl("--timeout", "5", "versions", "rack1", "nobody")
    assert Snapshot([*rack, twin]) == before
    assert "rack1: two cards have this name" in answer.err
    assert f"{rack[0].address('eth0')} on lan0" in answer.err
    assert f"{twin.address('eth0')} on lan0" in answer.err


@pytest.mark.usefixtures("untouched")
def test_reading_from_one_card_warns_of_none(ctl: Ctl, rack: list[Card]) -> None:
    assert "warning" not in ctl("--timeout", "5", "versions", "rack1", "nobody").err
