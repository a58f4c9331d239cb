# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the daemon lets happen on purpose, and whoever runs a card should know; told in docs/on-purpose.md."""

import socket
from collections.abc import Iterator

import pytest
from support.archives import archive
from support.documents import interface, ip_configuration, time_reference
from support.firewall import LIMITS, Firewall, packaged
from support.peers import TcpPeer, UdpPeer
from support.stopping import stopped
from support.uploads import send_upload
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, request

EXCEPTION = "Exception pending on Tarvel TCP peer socket"
HOST_NAME_KEY = "uci -q get system.@system[0].hostname > /tmp/uci.tmp"
SCRIPT = "/lib/upgrade/fwupgrade"


def scripts_running(card: Card) -> int:
    return len(card.inside.run(["pgrep", "-f", f"^(/bin/sh )?{SCRIPT}"]).stdout.split())


@pytest.fixture
def firewall(scratch_card: Card) -> Iterator[Firewall]:
    """With the packaged limits."""
    firewall = Firewall(scratch_card)
    firewall.load(packaged(LIMITS))
    yield firewall
    firewall.unload()


def test_the_packaged_firewall_example_drops_urgent_bytes(firewall: Firewall, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    tcp.socket.send(b"!", socket.MSG_OOB)
    wait_for(lambda: firewall.dropped()["urgent data"] > 0, 10, lambda: "no byte was dropped")
    assert not any(EXCEPTION in line for line in watch.log())
    tcp.reset()  # its end could never follow the byte that is dropped


def test_directory_in_place_of_the_settings_file_stops_the_next_start(scratch_card: Card) -> None:
    scratch_card.daemon.supervise(False)
    scratch_card.daemon.stop()
    scratch_card.inside.remove("/tmp/uci.tmp")
    scratch_card.inside.run(["mkdir", "/tmp/uci.tmp"])
    scratch_card.daemon.start(wait=False)
    assert scratch_card.daemon.wait_exit(2).signal == 6


def test_pipe_in_place_of_the_settings_file_holds_the_next_start_up(scratch_card: Card) -> None:
    scratch_card.daemon.stop()
    scratch_card.inside.remove("/tmp/uci.tmp")
    scratch_card.inside.run(["mkfifo", "/tmp/uci.tmp"])
    mark, commands = scratch_card.records.log_mark(), scratch_card.records.commands_mark()
    scratch_card.daemon.start(wait=False)
    scratch_card.records.wait_command(HOST_NAME_KEY, since=commands)
    assert scratch_card.inside.run(["cat", "/tmp/uci.tmp"]).stdout == "card1\n"  # somebody reads, and it goes on
    assert not any("socket" in line.text for line in scratch_card.records.log_lines(mark))


def test_upgrade_script_outlives_a_killed_daemon_and_another_runs_beside_it(
    scratch_card: Card, tcp: TcpPeer, addresses: dict[str, str]
) -> None:
    firmware = archive({"pnr/kernel": b"KERN-9.9.9\n"})
    scratch_card.inside.hold("fwupgrade")
    send_upload(tcp, firmware, Command.UPGRADE)
    scratch_card.records.wait_call("fwupgrade")
    of_one = scripts_running(scratch_card)
    calls, mark = scratch_card.records.calls_mark(), scratch_card.records.log_mark()
    scratch_card.daemon.kill()
    scratch_card.records.wait_log("BindToDevice (eth1) was successful", since=mark)
    with TcpPeer(addresses["eth0"]) as another:
        send_upload(another, firmware, Command.UPGRADE)
        scratch_card.records.wait_call("fwupgrade", since=calls)
        of_both = scripts_running(scratch_card)
        scratch_card.inside.release()
    assert of_one > 0 and of_both == 2 * of_one


def test_datagram_in_a_busy_cards_queue_is_obeyed_when_its_client_is_gone(
    scratch_card: Card, udp: UdpPeer, watch: Watch
) -> None:
    client = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    with stopped(scratch_card), client:
        client.sendto(
            request(Command.IP_SET, ip_configuration(interface("VemkEth2", "Dhcp"))), (udp.card_address, 50003)
        )
    scratch_card.records.wait_command("/etc/init.d/network restart", since=watch.commands_mark)
    assert scratch_card.inside.uci("get", "network.lanvemt2eth2.proto") == "dhcp"


@pytest.mark.parametrize(("mode", "committed"), [("Dhcp", True), ("Disabled", False)])
def test_staged_settings_of_others_share_the_fate_of_a_request(
    scratch_card: Card, udp: UdpPeer, watch: Watch, mode: str, committed: bool
) -> None:
    scratch_card.inside.uci("set", "network.others=interface")
    scratch_card.inside.uci("set", "network.others.ipaddr=2.2.2.2")
    both = ip_configuration(interface("VemkEth1", mode), interface("VemkEth2", mode))
    udp.ask(request(Command.IP_SET, both))
    watch.log()
    assert "network.others.ipaddr='2.2.2.2'" in watch.console()
    assert ("2.2.2.2" in scratch_card.inside.uci("show", "network")) == committed
    assert ("2.2.2.2" in scratch_card.inside.read("/etc/config/network")) == committed


def test_what_a_killed_daemon_has_staged_is_committed_by_the_next_set(
    scratch_card: Card, tcp: TcpPeer, udp: UdpPeer, watch: Watch
) -> None:
    scratch_card.inside.hold("ntpdate")
    tcp.send(request(Command.TIME_SET, time_reference("Ntp", "10.9.9.9")))
    scratch_card.records.wait_call("ntpdate", since=watch.calls_mark)
    mark = scratch_card.records.log_mark()
    scratch_card.daemon.kill()
    scratch_card.inside.release()
    scratch_card.records.wait_log("BindToDevice (eth1) was successful", since=mark)
    assert "10.9.9.9" not in scratch_card.inside.read("/etc/config/system")
    udp.ask(request(Command.IP_SET, ip_configuration(interface("VemkEth2", "Dhcp"))))
    scratch_card.records.wait_command("/etc/init.d/network restart", since=watch.commands_mark)
    assert "10.9.9.9" in scratch_card.inside.read("/etc/config/system")
