# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a shell command leaves running keeps nothing of the daemon's."""

import os
from pathlib import Path

from support.descriptors import descriptors
from support.documents import reboot_card, time_reference
from support.peers import TcpPeer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Status, request


def processes_running(card: Card, program: str) -> list[int]:
    """Processes of the card whose command line begins with the program; seen from outside."""
    assert card.daemon_pid is not None
    card_namespace = os.readlink(f"/proc/{card.daemon_pid}/ns/pid")
    found = []
    for entry in Path("/proc").iterdir():
        if not entry.name.isdigit():
            continue
        try:
            words = (entry / "cmdline").read_bytes().split(b"\0")
            if words[0] == program.encode() and os.readlink(entry / "ns/pid") == card_namespace:
                found.append(int(entry.name))
        except OSError:
            pass  # ended meanwhile
    return found


def left_running(card: Card, udp: UdpPeer) -> int:
    """A reboot that never gets to its end: a process that the daemon's shell has put in the background."""
    card.hold("reboot")
    assert udp.ask(request(Command.REBOOT, reboot_card())).header.status == Status.SUCCESS
    card.wait_call("reboot")
    return wait_for(lambda: next(iter(processes_running(card, "reboot")), None), 10, lambda: "no reboot is running")


def test_process_in_the_background_has_no_socket_of_the_daemon(
    scratch_card: Card, udp: UdpPeer, tcp: TcpPeer
) -> None:
    tcp.ask(request(2))
    pid = left_running(scratch_card, udp)
    assert sorted(descriptors(pid)) == [0, 1, 2]


def test_daemon_restarts_while_a_process_is_left_in_the_background(scratch_card: Card, udp: UdpPeer) -> None:
    pid = left_running(scratch_card, udp)
    scratch_card.stop_daemon()
    scratch_card.start_daemon()
    assert udp.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND
    assert Path(f"/proc/{pid}").exists()


def test_daemon_that_is_killed_is_restarted_by_its_supervisor(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    left_running(scratch_card, udp)
    mark = scratch_card.log_mark()
    scratch_card.kill_daemon()
    scratch_card.wait_log("BindToDevice (eth1) was successful", since=mark)
    assert udp.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND


def test_script_that_runs_has_no_lock_and_no_connection(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.hold("ntpd")
    tcp.send(request(Command.TIME_SET, time_reference("Ntp")))
    scratch_card.wait_call("ntpd")
    (pid,) = processes_running(scratch_card, "/etc/init.d/ntpd")
    assert sorted(descriptors(pid)) == [0, 1, 2]
    scratch_card.release()
    assert tcp.receive().header.status == Status.SUCCESS
