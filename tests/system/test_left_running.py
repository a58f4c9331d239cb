# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a shell command leaves running keeps nothing of the daemon's."""

from pathlib import Path

from support.descriptors import wait_descriptors
from support.documents import reboot_card, time_reference
from support.peers import TcpPeer, UdpPeer
from support.processes import processes_running
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Status, request


def left_running(card: Card, udp: UdpPeer) -> int:
    """A reboot that never gets to its end: a process that the daemon's shell has put in the background."""
    card.inside.hold("reboot")
    assert udp.ask(request(Command.REBOOT, reboot_card())).header.status == Status.SUCCESS
    card.records.wait_call("reboot")
    return wait_for(lambda: next(iter(processes_running(card, "reboot")), None), 10, lambda: "no reboot is running")


def test_process_in_the_background_has_no_socket_of_the_daemon(
    scratch_card: Card, udp: UdpPeer, tcp: TcpPeer
) -> None:
    tcp.ask(request(2))
    pid = left_running(scratch_card, udp)
    wait_descriptors(pid, [0, 1, 2])


def test_daemon_restarts_while_a_process_is_left_in_the_background(scratch_card: Card, udp: UdpPeer) -> None:
    pid = left_running(scratch_card, udp)
    scratch_card.daemon.stop()
    scratch_card.daemon.start()
    assert udp.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND
    assert Path(f"/proc/{pid}").exists()


def test_daemon_that_is_killed_is_restarted_by_its_supervisor(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    left_running(scratch_card, udp)
    mark = scratch_card.records.log_mark()
    scratch_card.daemon.kill()
    scratch_card.records.wait_log("BindToDevice (eth1) was successful", since=mark)
    assert udp.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND


def test_script_that_runs_has_no_lock_and_no_connection(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.hold("ntpd")
    tcp.send(request(Command.TIME_SET, time_reference("Ntp")))
    scratch_card.records.wait_call("ntpd")
    (pid,) = processes_running(scratch_card, "/etc/init.d/ntpd")
    wait_descriptors(pid, [0, 1, 2])
    scratch_card.inside.release()
    assert tcp.receive().header.status == Status.SUCCESS
