# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The ways out of the event loop, and start-up steps that only a spoiled system call can make fail."""

import re
from collections.abc import Callable
from contextlib import suppress

import pytest
from support.daemon import words
from support.peers import TcpPeer, UdpPeer
from support.tracing import Tracer
from tarvelsim import Card
from wire import Command, Status, request

NUMBER = re.compile(r"\(\d+\)")

pytestmark = pytest.mark.needs_native

# The kernel has two; which one is called is the C library's choice.
SELECT = "/^p?select6?$"
# The select() calls that end at once: for the unconnected first socket, then the one that waits.
WAITING = 2


def log_of(card: Card, mark: int, last: str) -> list[str]:
    card.records.wait_log(last, since=mark)
    return [f"{line.level} {line.text}" for line in card.records.log_lines(mark)]


def closed_sockets(lines: list[str]) -> int:
    return sum(line.startswith("info Socket (") for line in lines)


def test_interrupted_select_ends_the_daemon_with_status_1(scratch_card: Card, tracer: Tracer) -> None:
    mark = scratch_card.records.log_mark()
    tracer.inject(f"{SELECT}:error=EINTR:when={WAITING}", wait=False)
    assert scratch_card.daemon.wait_exit(2).status == 1
    lines = log_of(scratch_card, mark, "terminated unexpectedly")
    end = lines.index("warning select() failed: Interrupted system call")
    assert closed_sockets(lines[end:]) == 3  # server, eth0, eth1: no connection was open
    assert lines[-1] == "err tarvel-daemon terminated unexpectedly!"
    assert len(lines) == end + 5


def test_failing_select_ends_the_daemon_with_status_1(scratch_card: Card, tracer: Tracer) -> None:
    mark = scratch_card.records.log_mark()
    tracer.inject(f"{SELECT}:error=ENOMEM:when={WAITING}", wait=False)
    assert scratch_card.daemon.wait_exit(2).status == 1
    lines = log_of(scratch_card, mark, "terminated unexpectedly")
    assert f"warning select() failed: {words('Cannot allocate memory')}" in lines


def test_open_connection_is_closed_first_at_the_end(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject(f"{SELECT}:error=EINTR:when={WAITING + 2}")
    mark = scratch_card.records.log_mark()
    assert connect().ask(request(2)).header.status == Status.UNKNOWN_COMMAND
    lines = log_of(scratch_card, mark, "terminated unexpectedly")
    assert closed_sockets(lines) == 4


def test_select_that_times_out_is_logged_and_the_daemon_serves_on(
    scratch_card: Card, tracer: Tracer, udp: UdpPeer
) -> None:
    mark = scratch_card.records.log_mark()
    tracer.inject(f"{SELECT}:retval=0:when={WAITING}", wait=False)
    scratch_card.records.wait_log("select() timed out", since=mark, level="warning")
    assert udp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND


def test_failing_accept_ends_the_daemon_with_status_1(
    scratch_card: Card, tracer: Tracer, addresses: dict[str, str]
) -> None:
    tracer.inject("accept4:error=EMFILE")
    mark = scratch_card.records.log_mark()
    with suppress(ConnectionResetError):  # the card is quicker
        TcpPeer(addresses["eth0"]).close()
    assert scratch_card.daemon.wait_exit(2).status == 1
    lines = log_of(scratch_card, mark, "terminated unexpectedly")
    assert lines[0] == f"warning accept() failed: {words('Too many open files')}"
    assert closed_sockets(lines[1:-1]) == len(lines) - 2 == 3
    assert lines[-1] == "err tarvel-daemon terminated unexpectedly!"


def test_working_directory_that_cannot_be_made_ends_with_status_1(scratch_card: Card, tracer: Tracer) -> None:
    mark = scratch_card.records.log_mark()
    tracer.inject("mkdir:error=EROFS", wait=False)
    assert scratch_card.daemon.wait_exit(2).status == 1
    assert log_of(scratch_card, mark, "mkdir()")[-1] == "warning mkdir() failed: Read-only file system"


def test_broken_pipe_that_cannot_be_ignored_is_only_logged(scratch_card: Card, tracer: Tracer, udp: UdpPeer) -> None:
    place = tracer.ordinal("rt_sigaction(SIGPIPE, {sa_handler=SIG_IGN")
    mark = scratch_card.records.log_mark()
    tracer.inject(f"rt_sigaction:error=EINVAL:when={place}")
    assert "warning sigaction() FAILED: Invalid argument" in log_of(scratch_card, mark, "sigaction")
    assert udp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND


@pytest.mark.parametrize(
    ("fault", "last"),
    [
        ("socket:error=EMFILE:when=2", f"Creating stream socket failed: {words('Too many open files')}"),
        ("socket:error=EMFILE:when=4", f"Creating datagram socket failed: {words('Too many open files')}"),
        ("setsockopt:error=ENOPROTOOPT:when=1", "Setting server socket option failed: Protocol not available"),
        ("bind:error=EACCES:when=2", "Bind() failed: Permission denied"),
        ("listen:error=EADDRINUSE", f"listen() failed: {words('Address already in use')}"),
    ],
)
def test_socket_that_cannot_be_set_up_aborts_the_start(
    scratch_card: Card, tracer: Tracer, fault: str, last: str
) -> None:
    mark = scratch_card.records.log_mark()
    tracer.inject(fault, wait=False)
    assert scratch_card.daemon.wait_exit(2).signal == 6
    assert log_of(scratch_card, mark, last)[-1] == f"warning {last}"


def test_failing_receive_closes_the_connection(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("recvfrom:error=EIO:when=2")  # the first one is that of the unconnected socket
    mark = scratch_card.records.log_mark()
    peer = connect()
    peer.send(request(Command.VERSIONS))
    assert peer.rest() == b""
    assert f"warning recv() failed: {words('Input/output error')}" in log_of(scratch_card, mark, "closed")


def test_datagram_that_cannot_be_received_is_logged_and_forgotten(
    scratch_card: Card, tracer: Tracer, udp: UdpPeer
) -> None:
    tracer.inject("recvfrom:error=ENOMEM:when=2")
    mark = scratch_card.records.log_mark()
    assert udp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND
    lines = log_of(scratch_card, mark, "Unknown command")
    assert lines[0] == f"warning recvfrom() failed: {words('Cannot allocate memory')}"


def test_socket_that_cannot_be_closed_is_tried_again(scratch_card: Card, tracer: Tracer) -> None:
    that_of_the_first_pass = tracer.ordinal("close(")
    mark = scratch_card.records.log_mark()
    tracer.inject(f"close:error=EIO:when={that_of_the_first_pass}")
    lines = [NUMBER.sub("(N)", line) for line in log_of(scratch_card, mark, "successfully closed")]
    assert lines[-4:] == [
        f"warning recv() failed: {words('Transport endpoint is not connected')}",
        f"warning Failed to close socket (N): {words('Input/output error')}",
        f"warning recv() failed: {words('Transport endpoint is not connected')}",
        "info Socket (N) successfully closed",
    ]
