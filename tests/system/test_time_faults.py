# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The lock, the marker and the clock when the system does not play along, and the clock when it does."""

import fcntl
from collections.abc import Callable
from pathlib import Path

import pytest
from support.daemon import words
from support.documents import time_reference
from support.peers import PATIENCE, TcpPeer
from support.tracing import Tracer
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Status, request

MARKER = "/var/timesettings.replication"
LOCK = "/var/timesettings.lock"
MANUAL = time_reference("Manual", date_time="2023-11-14T22:13:20")


def set_time(tcp: TcpPeer, text: str) -> Status:
    return Status(tcp.ask(request(Command.TIME_SET, text)).header.status)


def is_blocked_in_flock(pid: int | None) -> bool:
    waiting = [line.split() for line in Path("/proc/locks").read_text(encoding="ascii").splitlines() if "->" in line]
    return any(str(pid) in fields for fields in waiting)


def test_setting_waits_for_another_holder_of_the_lock(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    with open(scratch_card.inside.path(LOCK), "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        tcp.send(request(Command.TIME_SET, time_reference("Ntp")))
        pid = scratch_card.daemon.pid
        wait_for(lambda: is_blocked_in_flock(pid), PATIENCE, lambda: "the daemon does not wait for the lock")
        assert not tcp.has_answer()
        assert watch.commands() == []
    assert tcp.receive().header.status == Status.SUCCESS


def test_lock_is_given_back(scratch_card: Card, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp"))
    with open(scratch_card.inside.path(LOCK), "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)


def test_lock_file_that_cannot_be_opened_stops_everything(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", LOCK])
    assert set_time(tcp, time_reference("Ntp")) == Status.FAILURE
    assert watch.log()[1:] == ["warning open() FAILED: Is a directory"]
    assert watch.commands() == []
    assert not scratch_card.inside.exists(MARKER)


def test_marker_that_cannot_be_made_is_a_failure(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", MARKER])
    assert set_time(tcp, time_reference("Ntp")) == Status.FAILURE
    assert watch.log()[-1] == "warning fopen() FAILED: Is a directory"
    assert "/etc/init.d/ntpd start" in watch.commands()


@pytest.mark.needs_native
def test_clock_is_set_to_the_given_second(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("clock_settime:retval=0")  # the call is never made
    assert set_time(connect(), MANUAL) == Status.SUCCESS
    calls = [line for line in tracer.lines() if line.startswith("clock_settime")]
    assert calls == ["clock_settime(CLOCK_REALTIME, {tv_sec=1700000000, tv_nsec=0}) = 0 (INJECTED)"]


@pytest.mark.needs_native
def test_clock_that_was_set_is_logged_without_a_warning(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("clock_settime:retval=0")
    mark = scratch_card.records.log_mark()
    assert set_time(connect(), MANUAL) == Status.SUCCESS
    scratch_card.records.wait_log("Setting unix time to 1700000000", since=mark, level="info")
    assert not [line for line in scratch_card.records.log_lines(mark) if line.level == "warning"]
    assert scratch_card.inside.exists(MARKER)


@pytest.mark.needs_native
def test_clock_error_is_logged_with_its_text(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("clock_settime:error=EINVAL")
    mark = scratch_card.records.log_mark()
    assert set_time(connect(), MANUAL) == Status.FAILURE
    scratch_card.records.wait_log("clock_settime() FAILED: Invalid argument", since=mark, level="warning")


FAULTS = [
    ("flock:error=ENOLCK:when=1", LOCK, "flock() FAILED: No locks available"),
    ("flock:error=ENOLCK:when=2", LOCK, "flock() FAILED: No locks available"),
    ("close:error=EIO", LOCK, f"close() FAILED: {words('Input/output error')}"),
]


@pytest.mark.needs_native
@pytest.mark.parametrize(("fault", "path", "warning"), FAULTS, ids=["lock", "unlock", "close"])
def test_failing_lock_file_is_a_failure(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer], fault: str, path: str, warning: str
) -> None:
    tracer.inject(fault, path=path)
    mark = scratch_card.records.log_mark()
    assert set_time(connect(), time_reference("Ntp")) == Status.FAILURE
    scratch_card.records.wait_log(warning, since=mark, level="warning")
    assert scratch_card.inside.exists(MARKER) == (":when=1" not in fault)


@pytest.mark.needs_native
def test_marker_that_cannot_be_closed_is_only_logged(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("close:error=EIO", path=MARKER)
    mark = scratch_card.records.log_mark()
    assert set_time(connect(), time_reference("Ntp")) == Status.SUCCESS
    scratch_card.records.wait_log(f"fclose() FAILED: {words('Input/output error')}", since=mark, level="warning")


@pytest.mark.needs_native
@pytest.mark.parametrize("shells", range(1, 7))
def test_script_that_cannot_be_run_ends_the_branch(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer], shells: int
) -> None:
    before = 3  # the host name twice, the server once
    tracer.inject(f"wait4:error=ECHILD:when={before + shells}")
    mark = scratch_card.records.commands_mark()
    assert set_time(connect(), time_reference("Ntp", "10.0.0.1")) == Status.FAILURE
    assert len(scratch_card.records.commands(mark)) in (shells, shells + 1)  # the lost shell may be late
