# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The supervisor heals the daemon, and the daemon lets it."""

from asking import ask, ask_udp, connect
from card import VirtualCard
from support.documents import interface, ip_configuration
from wire import Command, Status, request


def wait_for_another(card: VirtualCard, before: int | None) -> None:
    card.wait_for(lambda: card.daemon_pid() not in (None, before), "the supervisor starts another daemon")
    card.wait_for_log(f"tarveld[{card.daemon_pid()}]: BindToDevice (eth1) was successful")


def kill_daemon(card: VirtualCard) -> None:
    """Kills the daemon and waits until another one listens."""
    killed = card.daemon_pid()
    card.run(f"kill -9 {killed}")
    wait_for_another(card, killed)


def test_a_killed_daemon_is_started_again_and_serves(card: VirtualCard) -> None:
    kill_daemon(card)
    assert ask(Command.VERSIONS).header.status == Status.SUCCESS
    assert ask_udp("eth1", Command.IP_GET, ip_configuration()).header.status == Status.SUCCESS
    assert " supervise: " not in card.log()


def test_the_daemon_is_given_path_home_and_the_supervisor_s_library_and_reads_nothing(card: VirtualCard) -> None:
    process = f"/proc/{card.daemon_pid()}"
    assert set(card.run(f"tr '\\0' '\\n' <{process}/environ").split()) == {
        "PATH=/usr/sbin:/usr/bin:/sbin:/bin",
        "HOME=/",
        "LD_PRELOAD=/lib/libsetlbf.so",
    }
    assert card.run(f"readlink {process}/fd/0") == "/dev/null"


def test_a_connected_client_does_not_keep_the_next_daemon_from_its_port(card: VirtualCard) -> None:
    with connect() as peer:
        peer.ask(request(Command.VERSIONS))
        kill_daemon(card)
    assert "Bind() failed" not in card.log()


def test_what_an_init_script_left_running_does_not_hold_the_port(card: VirtualCard) -> None:
    with_dhcp = ip_configuration(interface("VemkEth2", "Dhcp"))
    assert ask_udp("eth0", Command.IP_SET, with_dhcp).header.status == Status.SUCCESS
    card.wait_for(lambda: card.status("pidof udhcpc") == 0, "the DHCP client runs")
    kill_daemon(card)
    assert ask(Command.VERSIONS).header.status == Status.SUCCESS


def test_a_daemon_that_does_not_end_when_it_is_asked_is_killed_five_seconds_later(card: VirtualCard) -> None:
    stuck = card.daemon_pid()
    card.run(f"kill -STOP {stuck}")
    asked = card.uptime()
    card.run("/etc/init.d/tarveld stop")
    assert card.uptime() - asked >= 5
    assert card.daemon_pid() != stuck
    wait_for_another(card, stuck)
