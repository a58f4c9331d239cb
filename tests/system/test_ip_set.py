# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Setting the IP configuration: what is staged, committed, answered and restarted."""

from collections.abc import Iterator

import pytest
from support.documents import envelope, interface, ip_configuration
from support.peers import BROADCAST, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

SECTION = "network.lanvemt2eth"
RESTART = "/etc/init.d/network restart"


def staged(number: int, *words: str) -> list[str]:
    """The uci commands of one interface; a word is "set" text or an option to delete."""
    return [
        f"uci -q set {SECTION}{number}.{word}" if "=" in word else f"uci -q delete {SECTION}{number}.{word}"
        for word in words
    ]


FINISH = [
    "uci -q changes ",
    f"uci -q get {SECTION}1.proto > /tmp/uci.tmp",
    f"uci -q get {SECTION}2.proto > /tmp/uci.tmp",
]
SUCCESS = [*FINISH, "uci -q commit ", RESTART]
FAILURE = [*FINISH, "uci -q revert network"]


def question(*interfaces: str) -> bytes:
    return request(Command.IP_SET, ip_configuration(*interfaces), sequence=21)


CHANGES = [
    (
        [interface("VemkEth1", "Static", "10.0.0.50", "255.255.0.0", "10.0.0.254")],
        staged(1, "proto=static", "ipaddr=10.0.0.50", "netmask=255.255.0.0", "gateway=10.0.0.254"),
    ),
    (
        [interface("VemkEth1", "Static", "10.0.0.50", "255.255.255.0")],
        staged(1, "proto=static", "ipaddr=10.0.0.50", "netmask=255.255.255.0", "gateway"),
    ),
    ([interface("VemkEth2", "Dhcp")], staged(2, "proto=dhcp", "ipaddr", "netmask", "gateway")),
    ([interface("VemkEth2", "Disabled")], staged(2, "proto=none", "ipaddr", "netmask", "gateway")),
    (
        [interface("VemkEth2", "Dhcp"), interface("VemkEth1", "Dhcp")],
        staged(2, "proto=dhcp", "ipaddr", "netmask", "gateway")
        + staged(1, "proto=dhcp", "ipaddr", "netmask", "gateway"),
    ),
    ([], []),
]


@pytest.mark.parametrize(("interfaces", "stages"), CHANGES, ids=lambda value: "-".join(value)[:40])
def test_change_runs_exactly_these_commands(
    scratch_card: Card, udp: UdpPeer, watch: Watch, interfaces: list[str], stages: list[str]
) -> None:
    answer = udp.ask(question(*interfaces))
    assert (answer.header, answer.destination) == (Header(command=0x8004, status=1, sequence=21), BROADCAST)
    watch.log()
    assert watch.commands() == [*stages, *SUCCESS]


def test_success_is_logged(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    data = question(interface("VemkEth2", "Dhcp"))
    udp.ask(data)
    assert watch.log() == [
        udp.logged(len(data)),
        "info Configuring network interfaces",
        "warning Wrong node name: IpConfiguration",
    ]


def test_two_interfaces_leave_no_warning(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(question(interface("VemkEth1", "Dhcp"), interface("VemkEth2", "Dhcp")))
    assert watch.log()[1:] == ["info Configuring network interfaces"]


def test_answer_goes_out_before_the_network_is_restarted(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.hold("network")
    assert udp.ask(question(interface("VemkEth2", "Dhcp"))).header.status == Status.SUCCESS
    scratch_card.records.wait_call("network", since=watch.calls_mark)
    assert scratch_card.inside.uci("get", f"{SECTION}2.proto") == "dhcp"
    assert scratch_card.address("eth1") == "10.0.1.11"
    scratch_card.inside.release()
    scratch_card.wait_address("eth1", "10.0.1.101")


def test_new_address_is_in_force_and_reported(scratch_card: Card, udp: UdpPeer, udp1: UdpPeer, watch: Watch) -> None:
    udp.ask(question(interface("VemkEth2", "Static", "10.0.1.77", "255.255.255.0", "10.0.1.1")))
    scratch_card.wait_address("eth1", "10.0.1.77")
    answer = udp1.ask(request(Command.IP_GET, ip_configuration()), to="10.0.1.77")
    assert 'Name="VemkEth2" Mode="Static" Address="10.0.1.77" Netmask="255.255.255.0" Gateway="10.0.1.1"' in answer.text


def test_disabled_device_loses_its_address(scratch_card: Card, udp: UdpPeer) -> None:
    udp.ask(question(interface("VemkEth2", "Disabled")))
    scratch_card.wait_address("eth1", None)


def test_interface_that_is_not_named_keeps_its_settings(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    before = scratch_card.inside.uci("show", f"{SECTION}2")
    udp.ask(question(interface("VemkEth1", "Dhcp")))
    watch.log()
    assert scratch_card.inside.uci("show", f"{SECTION}2") == before


def test_missing_gateway_removes_the_stored_one(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.uci("set", f"{SECTION}1.gateway=10.0.0.254")
    udp.ask(question(interface("VemkEth1", "Static", "10.0.0.11", "255.255.255.0")))
    watch.log()
    assert "gateway" not in scratch_card.inside.uci("show", f"{SECTION}1")


def test_pending_changes_of_others_are_committed_too(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.uci("set", "system.ntp.server=10.9.9.9")
    udp.ask(question(interface("VemkEth1", "Dhcp")))
    watch.log()
    assert scratch_card.inside.uci("changes") == ""
    assert "10.9.9.9" in scratch_card.inside.read("/etc/config/system")


@pytest.mark.parametrize("root", ["RebootCard", "IpConfiguration"])
def test_root_without_interfaces_restarts_the_network(
    scratch_card: Card, udp: UdpPeer, watch: Watch, root: str
) -> None:
    assert udp.ask(request(Command.IP_SET, envelope(root))).header.status == Status.SUCCESS
    watch.log()
    assert watch.commands() == SUCCESS


def test_request_for_another_card_stages_nothing(card: Card, udp: UdpPeer, watch: Watch) -> None:
    data = request(Command.IP_SET, ip_configuration(interface("VemkEth1", "Dhcp"), to="card2"))
    assert udp.is_ignored(data, to=BROADCAST)
    assert watch.commands() == []


@pytest.mark.parametrize("matching", ["set", "commit", "proto"])
def test_failing_uci_is_a_failure_without_a_restart(
    scratch_card: Card, udp: UdpPeer, watch: Watch, matching: str
) -> None:
    scratch_card.inside.fail("uci", matching=matching)
    answer = udp.ask(question(interface("VemkEth2", "Dhcp")))
    assert (answer.header, answer.destination) == (Header(command=0x8004, status=2, sequence=21), BROADCAST)
    assert watch.log()[-1] == "warning Configuring network interfaces failed"
    assert RESTART not in watch.commands()


@pytest.fixture
def read_only_card(scratch_card: Card) -> Iterator[Card]:
    """Nothing can be written into its /etc/config."""
    for mount in ("mount --bind /etc/config", "mount -o remount,bind,ro"):
        scratch_card.inside.run([*mount.split(), "/etc/config"])
    yield scratch_card
    scratch_card.inside.run(["umount", "/etc/config"])


def test_commit_that_writes_nothing_goes_unnoticed(read_only_card: Card, udp: UdpPeer, watch: Watch) -> None:
    before = read_only_card.inside.read("/etc/config/network")
    assert udp.ask(question(interface("VemkEth2", "Dhcp"))).header.status == Status.SUCCESS
    read_only_card.records.wait_command(RESTART, since=watch.commands_mark)
    assert read_only_card.inside.read("/etc/config/network") == before
    assert "network.lanvemt2eth2.proto='dhcp'" in read_only_card.inside.uci("changes")


def test_changes_are_listed_without_quotes_by_an_old_tool(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.daemon.stop()
    scratch_card.daemon.start(env={"SIM_UCI_YEAR": "2014"})
    udp.ask(question(interface("VemkEth2", "Dhcp")))
    assert "network.lanvemt2eth2.proto=dhcp\n" in watch.console()


@pytest.mark.parametrize("matching", ["delete", "changes"])
def test_commands_whose_result_does_not_matter(scratch_card: Card, udp: UdpPeer, matching: str) -> None:
    scratch_card.inside.fail("uci", matching=matching)
    assert udp.ask(question(interface("VemkEth2", "Dhcp"))).header.status == Status.SUCCESS


def test_failed_restart_is_logged_and_changes_nothing(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.fail("network", status=3)
    assert udp.ask(question(interface("VemkEth2", "Dhcp"))).header.status == Status.SUCCESS
    assert watch.log()[-1] == f"warning {RESTART} FAILED"
    assert scratch_card.inside.uci("get", f"{SECTION}2.proto") == "dhcp"
