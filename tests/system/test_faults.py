# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Single failures in the middle of a request, each of which must end with an answer or a log line, never the daemon."""

import socket
from collections.abc import Callable

import pytest
from support.daemon import words
from support.documents import ip_configuration
from support.peers import TcpPeer, UdpPeer
from support.stopping import stopped
from support.tracing import Tracer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request

SHELLS_OF_A_START = 2  # the host name, twice


def test_urgent_data_is_logged_as_an_exception_and_nothing_else(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    tcp.socket.send(b"!", socket.MSG_OOB)
    assert tcp.ask(request(3)).header.command == 0x8003
    assert "warning Exception pending on Tarvel TCP peer socket" in watch.log()


def test_answer_that_cannot_be_sent_is_logged(scratch_card: Card, udp1: UdpPeer) -> None:
    mark = scratch_card.records.log_mark()
    with stopped(scratch_card):
        udp1.send(request(0x42))
        scratch_card.inside.run(["ip", "link", "set", "eth1", "down"])
    scratch_card.records.wait_log("sendto() failed: Network", since=mark, level="warning")


def test_settings_file_that_cannot_be_written_is_a_failure(scratch_card: Card, udp: UdpPeer, tcp: TcpPeer) -> None:
    scratch_card.inside.remove("/tmp/uci.tmp")
    scratch_card.inside.run(["mkdir", "/tmp/uci.tmp"])
    assert tcp.ask(request(Command.TIME_GET)).header.status == Status.FAILURE
    assert udp.ask(request(Command.IP_GET, ip_configuration())).header.status == Status.FAILURE


@pytest.mark.needs_native
def test_restart_that_cannot_be_run_is_only_logged(
    scratch_card: Card, tracer: Tracer, udp: UdpPeer
) -> None:
    before = 4  # changes, both modes, commit
    tracer.inject(f"wait4:error=ECHILD:when={SHELLS_OF_A_START + before + 1}")
    mark = scratch_card.records.log_mark()
    assert udp.ask(request(Command.IP_SET, ip_configuration())).header.status == Status.SUCCESS
    scratch_card.records.wait_log(f"system() failed: {words('No child processes')}", since=mark, level="warning")


@pytest.mark.needs_native
def test_setting_that_cannot_be_read_for_want_of_a_shell_is_told(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject(f"wait4:error=ECHILD:when={SHELLS_OF_A_START + 1}")
    assert connect().ask(request(Command.TIME_GET)).header.status == Status.FAILURE
    scratch_card.records.wait_console(f"system() FAILED: {words('No child processes')}\n")


@pytest.mark.needs_native
@pytest.mark.parametrize(
    ("path", "component"), [("/etc/pnr/kernel", "kernel"), ("/dev/mtd0ro", "BootLoader")], ids=["file", "flash"]
)
def test_file_that_cannot_be_closed_was_read_all_the_same(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer], path: str, component: str
) -> None:
    tracer.inject("close:error=EIO", path=path)
    assert f'"{component}"' in connect().ask(request(Command.VERSIONS)).text
    scratch_card.records.wait_console(f"fclose() FAILED: {words('Input/output error')}\n")


@pytest.mark.needs_native
def test_directory_that_cannot_be_listed_leaves_its_components_out(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("getdents64:error=EIO", path="/etc/pnr")
    assert '"kernel"' not in connect().ask(request(Command.VERSIONS)).text


@pytest.mark.needs_native
def test_datagram_that_is_cut_on_its_way_out_is_logged(scratch_card: Card, tracer: Tracer, udp: UdpPeer) -> None:
    last_of_a_start = tracer.ordinal("sendto(")
    # The log goes out by the same call: the datagram, the unknown command, then the answer.
    tracer.inject(f"sendto:retval=5:when={last_of_a_start + 3}")
    mark = scratch_card.records.log_mark()
    udp.send(request(0x42))
    scratch_card.records.wait_log("Datagram has been truncated by sendto()", since=mark, level="warning")


@pytest.mark.needs_native
def test_reply_that_cannot_be_sent_is_logged_and_the_connection_kept(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    last_of_a_start = tracer.ordinal("sendto(")
    # The connection and the unknown command are logged before the reply.
    tracer.inject(f"sendto:error=ENOBUFS:when={last_of_a_start + 3}")
    mark = scratch_card.records.log_mark()
    peer = connect()
    peer.send(request(2))
    scratch_card.records.wait_log("send() failed: No buffer space available", since=mark, level="warning")
    assert peer.ask(request(3)).header.command == 0x8003
