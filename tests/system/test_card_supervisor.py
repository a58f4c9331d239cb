# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card's supervisor and reboot treat the daemon as the platform's do."""

import os
import shlex
import signal
from pathlib import Path

import pytest
from support.documents import ip_configuration, reboot_card
from support.peers import UdpPeer
from support.processes import processes_running
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Status, request

PRELOADED = "/lib/libsetlbf.so"


def environment(pid: int) -> dict[str, str]:
    content = Path(f"/proc/{pid}/environ").read_text(encoding="utf-8")
    return dict(variable.split("=", 1) for variable in content.split("\0") if variable)


def test_daemon_is_given_path_home_and_the_line_buffering_library(card: Card) -> None:
    assert card.daemon.pid is not None
    assert environment(card.daemon.pid) == {
        "PATH": "/run/bin:/usr/sbin:/usr/bin:/sbin:/bin",
        "HOME": "/",
        "LD_PRELOAD": PRELOADED,
    }


def test_daemon_reads_nothing(card: Card) -> None:
    assert os.readlink(f"/proc/{card.daemon.pid}/fd/0") == "/dev/null"


@pytest.mark.needs_native
def test_line_buffering_library_is_loaded(card: Card) -> None:
    assert "libsetlbf.so" in Path(f"/proc/{card.daemon.pid}/maps").read_text(encoding="utf-8")


def test_children_of_the_daemon_inherit_its_environment(scratch_card: Card, udp: UdpPeer) -> None:
    scratch_card.inside.hold("network")
    udp.ask(request(Command.IP_SET, ip_configuration()))
    scratch_card.records.wait_call("network")
    (child,) = processes_running(scratch_card, "/etc/init.d/network")
    inherited = environment(child)
    assert (inherited["HOME"], inherited["LD_PRELOAD"]) == ("/", PRELOADED)


def starts(card: Card, since: int) -> int:
    return [line.text for line in card.records.log_lines(since)].count("Starting...")


def test_daemon_is_started_again_after_each_end_and_nobody_logs_it(scratch_card: Card) -> None:
    mark = scratch_card.records.log_mark()
    for _ in range(4):
        scratch_card.daemon.kill()
        scratch_card.daemon.wait_ready()
    assert starts(scratch_card, mark) == 4
    assert {line.ident for line in scratch_card.records.log_lines(mark, ident=None)} == {"tarveld"}
    assert "ended" not in scratch_card.records.console()


def test_abort_is_told_as_exit_code_134(scratch_card: Card) -> None:
    scratch_card.daemon.kill(signal.SIGABRT)
    assert scratch_card.daemon.wait_exit().code == 134


def test_daemon_is_asked_to_end(scratch_card: Card) -> None:
    scratch_card.daemon.stop()
    assert scratch_card.daemon.wait_exit().signal == signal.SIGTERM


def test_daemon_that_does_not_end_is_killed(scratch_card: Card) -> None:
    stat = Path(f"/proc/{scratch_card.daemon.pid}/stat")
    scratch_card.daemon.kill(signal.SIGSTOP)
    wait_for(lambda: ") T " in stat.read_text(encoding="ascii"), 10, lambda: "the daemon was not stopped")
    scratch_card.daemon.stop()
    assert scratch_card.daemon.wait_exit().signal == signal.SIGKILL


def own_lines(card: Card) -> list[str]:
    return [line.text for line in card.records.log_lines(ident="card")]


STOPS = ["rebooting", "K10tarveld stop", "K89log stop", "K90network stop", "booted (2)"]


def test_reboot_stops_the_daemon_first_and_the_network_last(scratch_card: Card) -> None:
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    assert own_lines(scratch_card)[1:] == STOPS
    assert scratch_card.daemon.wait_exit().signal == signal.SIGTERM


def test_who_asks_for_a_reboot_while_the_card_goes_down_gets_no_second_one(scratch_card: Card) -> None:
    scratch_card.inside.run(["reboot"])
    scratch_card.records.wait_log("K10tarveld stop")
    os.kill(scratch_card.init_pid, signal.SIGTERM)
    scratch_card.wait_boot(2)
    for _ in range(2):  # served between what is due, a second reboot first of all
        assert scratch_card.daemon.pid is not None
    assert own_lines(scratch_card)[1:] == STOPS


def test_boot_starts_what_is_enabled_with_what_is_committed(scratch_card: Card) -> None:
    scratch_card.inside.uci("set", "system.ntp.server=10.0.0.9")
    scratch_card.inside.uci("commit", "system")
    scratch_card.inside.uci("set", "system.ntp.server=10.0.0.10")
    scratch_card.inside.run(["/etc/init.d/ntpd", "enable"])
    scratch_card.inside.run(["/etc/init.d/ntpdate", "enable"])
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    running = "/var/etc/ntpd.conf"
    wait_for(lambda: scratch_card.inside.exists(running), 20, lambda: "ntpd is not started")
    wait_for(lambda: scratch_card.inside.read(running) == "server 10.0.0.9 iburst\n", 20, lambda: "for another server")


def test_boot_starts_nothing_that_is_not_enabled(scratch_card: Card) -> None:
    scratch_card.inside.uci("set", "system.ntp.server=10.0.0.9")
    scratch_card.inside.uci("commit", "system")
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    assert not scratch_card.inside.exists("/var/etc/ntpd.conf")


def test_reboot_stops_ntpd_where_that_is_enabled(scratch_card: Card) -> None:
    scratch_card.inside.run(["/etc/init.d/ntpd", "enable"])
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    assert own_lines(scratch_card)[1:] == [*STOPS[:2], "K65ntpd stop", *STOPS[2:]]


def test_what_is_said_behind_the_stop_of_the_log_is_lost(scratch_card: Card) -> None:
    """A process that says something when it is asked to end, which is when all stop scripts have run."""
    says = "trap 'logger late; exit' TERM; logger early; while :; do sleep 0.01; done"
    scratch_card.inside.run(["bash", "-c", f"setsid bash -c {shlex.quote(says)} >/dev/null 2>&1 &"])
    scratch_card.records.wait_log("early")
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    assert not any(line.text == "late" for line in scratch_card.records.log_lines(ident=None))


def test_process_that_does_not_end_in_a_reboot_is_killed(scratch_card: Card) -> None:
    scratch_card.inside.run(["bash", "-c", "trap '' TERM; setsid sleep 1000 >/dev/null 2>&1 &"])
    sleeper = wait_for(lambda: next(iter(processes_running(scratch_card, "sleep")), None), 10, lambda: "nobody sleeps")
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    assert not Path(f"/proc/{sleeper}").exists()


def test_daemon_answers_until_the_reboot_begins(scratch_card: Card, udp: UdpPeer) -> None:
    scratch_card.inside.hold("reboot")
    udp.ask(request(Command.REBOOT, reboot_card()))
    assert udp.ask(request(Command.IP_GET, ip_configuration())).header.status == Status.SUCCESS
    scratch_card.inside.release()
    scratch_card.wait_boot(2)
