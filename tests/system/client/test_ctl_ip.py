# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl ip"""

import subprocess
from collections.abc import Iterator
from pathlib import Path

import pytest
from support.ctl import Answer, Ctl, interrupt
from tarvelsim import Card

NEW = "10.0.1.77/24,10.0.1.1"
ETH2 = ("--if", "VemkEth2")


def test_both_interfaces_are_shown(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("ip", "get", "rack1")
    assert answer.code == 0
    rows = {row["interface"]: row for row in answer.result["interfaces"]}
    assert rows["VemkEth1"]["address"] == rack[0].address("eth0")
    assert rows["VemkEth2"]["mode"] == "Static"
    assert rows["VemkEth2"]["gateway"] is None


def test_an_address_is_no_name(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("ip", "get", "10.0.0.11").code == 2


def test_a_wrong_address_is_no_name(ctl: Ctl) -> None:
    answer = ctl("versions", "10.0.0.300")
    assert answer.code == 2
    assert "10.0.0.300" in answer.err


def test_an_address_has_the_name_of_the_groups_file(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[0].address("eth0") or ""
    (ctl.config / "groups").write_text(f"rack1 {address}\n")
    assert ctl("ip", "get", address).code == 0


def test_a_static_address_is_set_and_seen_through(ctl: Ctl, scratch: Card) -> None:
    answer = ctl.json("ip", "set", *ETH2, "--static", NEW, "rack1")
    assert answer.code == 0
    assert answer.result["state"] == "applied"
    assert answer.result["wanted"] == "Static 10.0.1.77/255.255.255.0 gateway 10.0.1.1"
    scratch.wait_address("eth1", "10.0.1.77")


def test_what_is_now_wanted_and_lost_is_shown_before(ctl: Ctl, scratch: Card) -> None:
    assert ctl("ip", "set", *ETH2, "--static", NEW, "rack1").code == 0
    answer = ctl("ip", "set", *ETH2, "--dhcp", "rack1")
    assert answer.code == 0
    assert "now:    Static 10.0.1.77/255.255.255.0 gateway 10.0.1.1" in answer.err
    assert "the gateway 10.0.1.1 of VemkEth2 will be deleted" in answer.err
    assert scratch.inside.uci("get", "network.lanvemt2eth2.proto") == "dhcp"


def test_an_interface_is_disabled(ctl: Ctl, scratch: Card) -> None:
    assert ctl("ip", "set", *ETH2, "--disabled", "rack1").code == 0
    assert scratch.inside.uci("get", "network.lanvemt2eth2.proto") == "none"


def test_the_same_configuration_is_nothing_to_do(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[0].records.calls_mark()
    answer = ctl.json("ip", "set", *ETH2, "--static", f"{rack[0].address('eth1')}/24", "rack1")
    assert answer.code == 0
    assert (answer.result["changed"], answer.result["state"]) == (False, "as wanted")
    assert answer.result["effect"] == "none"
    assert answer.err.endswith("\nrack1: the card has this configuration already\n")
    assert rack[0].records.calls("network", since=mark) == []


def test_disabling_both_is_refused_here(ctl: Ctl, scratch: Card) -> None:
    assert ctl("ip", "set", *ETH2, "--disabled", "rack1").code == 0
    mark = scratch.records.log_mark()
    assert ctl("ip", "set", "--if", "VemkEth1", "--disabled", "rack1").code == 2
    assert "Configuring network interfaces" not in [line.text for line in scratch.records.log_lines(mark)]


def test_a_gateway_outside_the_net_is_refused_here(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("ip", "set", *ETH2, "--static", "10.0.1.77/24,10.0.2.1", "rack1").code == 2


def test_one_address_is_not_for_several_cards(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("ip", "set", *ETH2, "--static", NEW, "rack[1-2]").code == 2


def test_a_dry_run_shows_the_request_and_changes_nothing(ctl: Ctl, rack: list[Card]) -> None:
    result = ctl.json("--dry-run", "ip", "set", *ETH2, "--disabled", "rack1").result
    assert result["xml"] == (
        '<IpConfiguration From="tarvelctl" To="rack1"><Interface Name="VemkEth2" Mode="Disabled"/></IpConfiguration>'
    )
    assert result["frame"].startswith("81c39aff 01010504 04000001")
    assert rack[0].inside.uci("get", "network.lanvemt2eth2.proto") == "static"


def test_the_card_is_told_once_though_it_hears_two_networks(ctl: Ctl, scratch: Card) -> None:
    mark = scratch.records.calls_mark()
    assert ctl("ip", "set", *ETH2, "--dhcp", "rack1").code == 0
    assert len(scratch.records.calls("network", since=mark)) == 1


def test_a_refusal_of_the_card_is_exit_3(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.fail("uci", matching="commit")
    assert ctl("ip", "set", *ETH2, "--dhcp", "rack1").code == 3


def test_a_change_without_a_way_back_needs_yes(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["uci", "delete", "network.lanvemt2eth2.netmask"])
    answer = ctl.json("ip", "set", *ETH2, "--dhcp", "rack1")
    assert answer.code == 2
    assert answer.result["category"] == "needs-yes"
    assert scratch.inside.uci("get", "network.lanvemt2eth2.proto") == "static"
    assert ctl("--yes", "ip", "set", *ETH2, "--dhcp", "rack1").code == 0


def test_a_card_that_refuses_to_tell_needs_yes(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["uci", "set", "network.lanvemt2eth2.proto=pppoe"])
    answer = ctl("ip", "set", *ETH2, "--dhcp", "rack1")
    assert answer.code == 2
    assert "refused to tell" in answer.err
    mark = scratch.records.calls_mark()
    assert ctl("--yes", "ip", "set", *ETH2, "--dhcp", "rack1").code == 0
    assert len(scratch.records.calls("network", since=mark)) == 1


@pytest.fixture
def strict_reverse_path() -> Iterator[None]:
    """This host drops what comes from an address that it would not answer through the same device."""
    setting = Path("/proc/sys/net/ipv4/conf/lan0/rp_filter")
    former = setting.read_text()
    setting.write_text("1")
    yield
    setting.write_text(former)


@pytest.mark.usefixtures("strict_reverse_path")
def test_a_change_to_a_wrong_network_is_rolled_back(ctl: Ctl, scratch: Card) -> None:
    """Nothing of the card gets through any more, but a broadcast still reaches it."""
    former = scratch.address("eth0")
    answer = ctl.json(
        "-i", "lan0", "--force", "--timeout", "2", "ip", "set", "--if", "VemkEth1", "--static", "172.16.5.5/24", "--wait", "3", "rack1"
    )
    assert answer.code == 7
    assert answer.result["state"] == "rolled back"
    assert scratch.address("eth0") == former


def test_settings_that_the_network_does_not_follow_are_rolled_back(ctl: Ctl, scratch: Card) -> None:
    """The other interface answers all the time, and with the new settings."""
    former = scratch.address("eth1")
    scratch.inside.fail("network")
    answer = ctl.json("ip", "set", *ETH2, "--static", NEW, "--wait", "3", "rack1")
    assert (answer.code, answer.result["state"]) == (7, "rolled back")
    assert scratch.address("eth1") == former


def test_what_only_the_other_interface_says_is_called_stored(ctl: Ctl, scratch: Card) -> None:
    answer = ctl.json("-i", "lan0", "ip", "set", *ETH2, "--static", NEW, "rack1")
    assert (answer.code, answer.result["state"]) == (0, "stored")
    assert "cannot be seen from here" in answer.result["hint"]


def test_a_refused_rollback_leaves_a_lost_card(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.hold("network")
    mark = scratch.records.calls_mark()
    running = ctl.start("-o", "json", "ip", "set", *ETH2, "--static", NEW, "--wait", "2", "rack1")
    scratch.records.wait_call("network", since=mark)
    scratch.inside.run(["uci", "set", "network.lanvemt2eth2.gateway=10.0.1.254"])
    scratch.inside.fail("uci", matching="commit")
    scratch.inside.release()
    out, err = running.communicate(timeout=60)
    answer = Answer(running.returncode, out, err)
    assert (answer.code, answer.result["state"]) == (7, "lost")
    assert "ip rescue rack1" in answer.result["hint"]


def test_a_card_that_comes_back_different_is_rolled_back(ctl: Ctl, scratch: Card) -> None:
    former = scratch.inside.uci("get", "network.lanvemt2eth2.ipaddr")
    scratch.inside.hold("network")
    mark = scratch.records.calls_mark()
    running = ctl.start("-o", "json", "ip", "set", *ETH2, "--static", NEW, "--wait", "3", "rack1")
    scratch.records.wait_call("network", since=mark)
    scratch.inside.run(["uci", "set", "network.lanvemt2eth2.gateway=10.0.1.254"])
    scratch.inside.release()
    out, err = running.communicate(timeout=60)
    answer = Answer(running.returncode, out, err)
    assert answer.code == 7
    assert answer.result["state"] == "rolled back"
    assert scratch.inside.uci("get", "network.lanvemt2eth2.ipaddr") == former


def test_a_card_is_rescued_with_its_former_configuration(ctl: Ctl, scratch: Card) -> None:
    former = scratch.address("eth1") or ""
    assert ctl("ip", "set", *ETH2, "--static", NEW, "rack1").code == 0
    answer = ctl.json("--force", "ip", "rescue", "rack1")
    assert (answer.code, answer.result["state"]) == (0, "rescued")
    scratch.wait_address("eth1", former)


def test_a_card_is_rescued_with_a_given_configuration(ctl: Ctl, scratch: Card) -> None:
    assert ctl("--force", "ip", "rescue", *ETH2, "--static", NEW, "rack1").code == 0
    scratch.wait_address("eth1", "10.0.1.77")


@pytest.mark.usefixtures("strict_reverse_path")
def test_a_card_that_is_not_heard_is_rescued(ctl: Ctl, scratch: Card) -> None:
    """This host drops its answers, whoever asks, until it has an address of this network again."""
    former = scratch.address("eth0") or ""
    scratch.inside.run(["ip", "address", "flush", "dev", "eth0"])
    scratch.inside.run(["ip", "address", "add", "172.16.5.5/24", "dev", "eth0"])
    subprocess.run(["ip", "neighbour", "flush", "dev", "lan0"], check=True)  # the kernel needs a minute
    words = ("-i", "lan0", "--timeout", "1", "ip", "rescue", "--if", "VemkEth1", "--static", f"{former}/24", "rack1")
    assert ctl(*words).code == 0
    scratch.wait_address("eth0", former)


def test_nothing_is_known_of_a_card_that_was_never_changed(ctl: Ctl) -> None:
    assert ctl("ip", "rescue", "rack1").code == 2


def test_a_card_that_is_down_is_not_rescued(ctl: Ctl) -> None:
    answer = ctl("--timeout", "0.3", "ip", "rescue", *ETH2, "--dhcp", "--wait", "1", "nobody")
    assert answer.code == 5


def test_an_interrupted_change_says_what_may_be(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.hold("network")
    mark = scratch.records.calls_mark()
    running = ctl.start("-o", "json", "ip", "set", *ETH2, "--dhcp", "rack1")
    scratch.records.wait_call("network", since=mark)
    answer = interrupt(running)
    scratch.inside.release()
    assert answer.code == 130
    assert answer.result["state"] == "unknown"
    assert "either configuration" in answer.result["hint"]
