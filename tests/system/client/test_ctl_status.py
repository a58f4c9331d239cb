# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl status, reboot and raw"""

import socket
from pathlib import Path

import pytest
from support.ctl import Ctl, interrupt
from tarvelsim import Card
from wire.numbers import PORT


def test_an_idle_card_is_up(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("status", "rack1")
    assert (answer.code, answer.result["state"]) == (0, "up and idle")


def test_a_card_with_another_client_is_busy(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[0].address("eth0") or ""
    mark = rack[0].records.log_mark()
    with socket.create_connection((address, PORT)):
        rack[0].records.wait_log("accept", since=mark)
        answer = ctl.json("--timeout", "0.5", "status", address)
    assert (answer.code, answer.result["state"]) == (5, "busy")


def test_a_card_without_daemon_refuses(ctl: Ctl, scratch: Card) -> None:
    address = scratch.address("eth0") or ""
    scratch.daemon.supervise(False)
    scratch.daemon.stop()
    answer = ctl.json("status", address)
    assert (answer.code, answer.result["state"]) == (6, "daemon down")


def test_an_address_without_a_host_is_out_of_reach(ctl: Ctl) -> None:
    answer = ctl.json("--timeout", "0.5", "status", "10.0.0.250")
    assert answer.code == 6
    assert "host is down" in answer.result["hint"]


def test_a_stalled_card_delays_no_other(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[0].address("eth0") or ""
    mark = rack[0].records.log_mark()
    with socket.create_connection((address, PORT)):
        rack[0].records.wait_log("accept", since=mark)
        running = ctl.start("-o", "jsonl", "--timeout", "60", "versions", address, "rack[2-8]")
        assert running.stdout
        seen = [running.stdout.readline() for _ in range(7)]  # while the first still waits
    running.communicate(timeout=30)
    assert not any(f'"target":"{address}"' in line for line in seen)
    assert all('"ok":true' in line for line in seen)


def test_a_card_without_an_address_is_not_mistaken_for_this_host(ctl: Ctl, scratch: Card) -> None:
    for device in ("eth0", "eth1"):
        scratch.inside.run(["ip", "address", "flush", "dev", device])
    answer = ctl.json("-i", "lan0", "status", "rack1")
    assert (answer.code, answer.result["category"]) == (6, "no-address")
    assert answer.result["state"] == "no address"


def test_a_card_that_nobody_finds_is_in_no_state_of_its_own(ctl: Ctl) -> None:
    answer = ctl.json("--timeout", "0.3", "status", "nobody")
    assert (answer.code, answer.result["state"]) == (5, "not found")
    assert "busy" in answer.result["hint"]


@pytest.mark.parametrize("address", ["", "172.16.5.5/24"])
def test_only_a_reboot_is_proof_of_one(ctl: Ctl, scratch: Card, address: str) -> None:
    """A card that no connection reaches has not gone down for that."""
    for device in ("eth0", "eth1"):
        scratch.inside.run(["ip", "address", "flush", "dev", device])
    if address:
        scratch.inside.run(["ip", "address", "add", address, "dev", "eth0"])
    boots = scratch.boots
    answer = ctl.json("-i", "lan0", "reboot", "--wait", "rack1")
    assert (answer.code, answer.result["state"]) == (0, "back")
    assert scratch.boots == boots + 1


def test_cards_reboot_and_come_back(ctl: Ctl, scratch: Card) -> None:
    boots = scratch.boots
    answer = ctl.json("reboot", "--wait", "rack1")
    assert answer.code == 0
    assert answer.result["state"] == "back"
    assert 0 < answer.result["down_after"] < answer.result["back_after"]
    scratch.wait_boot(boots + 1)


def test_a_reboot_is_asked_for_once(ctl: Ctl, scratch: Card) -> None:
    mark = scratch.records.calls_mark()
    boots = scratch.boots
    assert ctl("reboot", "rack1").code == 0
    scratch.wait_boot(boots + 1)
    assert len(scratch.records.calls("reboot", since=mark)) == 1


def test_a_card_that_refuses_to_tell_its_addresses_reboots_all_the_same(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["uci", "set", "network.lanvemt2eth2.proto=pppoe"])
    boots = scratch.boots
    assert ctl.json("reboot", "--wait", "rack1").result["state"] == "back"
    scratch.wait_boot(boots + 1)


def test_a_card_that_confirms_but_stays_up_is_exit_7(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.fail("reboot")
    answer = ctl.json("reboot", "--wait", "--wait-time", "2", "rack1")
    assert (answer.code, answer.result["category"]) == (7, "stayed-up")


def test_a_dry_run_reboots_nothing(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[0].records.calls_mark()
    assert ctl.json("--dry-run", "reboot", "rack1").result["xml"] == '<RebootCard From="tarvelctl" To="rack1"/>'
    assert rack[0].records.calls("reboot", since=mark) == []


def test_ctrl_c_while_waiting_is_exit_130(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.fail("reboot")
    mark = scratch.records.calls_mark()
    running = ctl.start("-o", "json", "reboot", "--wait", "rack1")
    scratch.records.wait_call("reboot", since=mark)
    answer = interrupt(running)
    assert answer.code == 130
    assert answer.result["category"] == "interrupted"


def test_any_command_can_be_sent(ctl: Ctl, rack: list[Card]) -> None:
    result = ctl.json("raw", "--command", "16", "rack1").result
    assert result["status"] == 1
    assert result["text"].startswith("<TimeReferenceConfiguration ")


def test_an_unknown_command_is_exit_4(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("raw", "--command", "99", "rack1")
    assert (answer.code, answer.result["status"]) == (4, 6)


def test_wrong_numbers_are_exit_4(ctl: Ctl, rack: list[Card]) -> None:
    for option, status in (("--protocol-version", 3), ("--device", 4), ("--service", 5)):
        answer = ctl.json("raw", "--command", "1", option, "9", "rack1")
        assert (answer.code, answer.result["status"]) == (4, status)


def test_a_payload_comes_from_a_file(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    (tmp_path / "payload").write_bytes(b"\x03\x00\x00\x00abc")
    answer = ctl.json("raw", "--command", "17", "--format", "1", "--payload", str(tmp_path / "payload"), "rack1")
    assert (answer.code, answer.result["status"]) == (3, 2)


def test_a_broadcast_is_answered(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("raw", "--udp", "--command", "3", "rack1")
    assert (answer.code, answer.result["status"]) == (3, 2)
