# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon as the package's init script starts it: neither it nor what it runs can gain a right."""

from collections.abc import Iterator
from pathlib import Path

import pytest
from support.archives import archive
from support.documents import interface, ip_configuration, reboot_card, time_reference
from support.peers import TcpPeer, UdpPeer
from support.processes import processes_running
from support.uploads import send_upload
from tarvelsim import Card
from wire import Command, Status, request


def can_gain_rights(pid: int) -> bool:
    status = Path(f"/proc/{pid}/status").read_text(encoding="utf-8")
    fields = dict(line.split(":\t", 1) for line in status.splitlines())
    return fields["NoNewPrivs"] == "0"


@pytest.fixture
def confined_card(scratch_card: Card, daemon: list[str]) -> Iterator[Card]:
    scratch_card.daemon.stop()
    scratch_card.daemon.start(["setpriv", "--no-new-privs", "--", *daemon])
    assert scratch_card.daemon.pid is not None
    assert not can_gain_rights(scratch_card.daemon.pid)
    yield scratch_card


def let_run(card: Card, name: str, program: str) -> None:
    """What the daemon has started, and the test has held up, goes on; it cannot gain rights either."""
    card.records.wait_call(name)
    pids = processes_running(card, program)
    assert pids
    assert not any(can_gain_rights(pid) for pid in pids)
    card.inside.release()


def test_time_server_is_set_and_followed(confined_card: Card, tcp: TcpPeer) -> None:
    confined_card.inside.hold("ntpd")
    tcp.send(request(Command.TIME_SET, time_reference("Ntp", "10.0.0.5")))
    let_run(confined_card, "ntpd", "/etc/init.d/ntpd")
    assert tcp.receive().header.status == Status.SUCCESS
    report = tcp.ask(request(Command.TIME_GET)).text
    assert 'Mode="Ntp"' in report
    assert 'NtpServer="10.0.0.5"' in report


def test_address_is_changed(confined_card: Card, udp: UdpPeer) -> None:
    confined_card.inside.hold("network")
    change = interface("VemkEth2", "Static", "10.0.1.77", "255.255.255.0")
    assert udp.ask(request(Command.IP_SET, ip_configuration(change))).header.status == Status.SUCCESS
    let_run(confined_card, "network", "/etc/init.d/network")
    confined_card.wait_address("eth1", "10.0.1.77")


def test_firmware_is_installed(confined_card: Card, tcp: TcpPeer) -> None:
    confined_card.inside.hold("fwupgrade")
    send_upload(tcp, archive({"pnr/kernel": b"KERN-9.9.9\n"}), Command.UPGRADE)
    assert tcp.receive().header.status == Status.SUCCESS
    let_run(confined_card, "fwupgrade", "/lib/upgrade/fwupgrade")
    assert '<Component Id="kernel" Version="KERN-9.9.9"/>' in tcp.ask(request(Command.VERSIONS)).text


def test_card_is_rebooted(confined_card: Card, udp: UdpPeer) -> None:
    confined_card.inside.hold("reboot")
    assert udp.ask(request(Command.REBOOT, reboot_card())).header.status == Status.SUCCESS
    let_run(confined_card, "reboot", "reboot")
    confined_card.wait_boot(2)
    assert udp.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND
