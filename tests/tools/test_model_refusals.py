# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the model says of a request while the system refuses one thing."""

from typing import Any

import pytest
from hostile.jobs import JOBS
from model import Card, Fault, Refusal
from model.card import DRAV_FILE, FLASH_DEVICE, PART_NUMBERS, VEMK_FILE
from model.settings import Settings
from twin.actions import Outcome
from twin.comparison import foresee
from wire import HEADER_SIZE, Header, Status

_ERROR = "Input/output error"
_FLASH = b"PNR=1\0".ljust(1024)
_PORTS = {name: ("10.0.0.1", 40000) for name in ("tcp", "lan0")}
_ACTIONS = {job.name: job.action for job in JOBS}


def card() -> Card:
    settings: dict[str, Any] = {
        "network.lanvemt2eth1.proto": "static",
        "network.lanvemt2eth1.ipaddr": "10.0.0.11",
        "network.lanvemt2eth2.proto": "dhcp",
        "system.ntp.server": "10.0.0.1",
    }
    files = {DRAV_FILE: b"a\n", VEMK_FILE: b"b\n", FLASH_DEVICE: _FLASH, PART_NUMBERS + "squashfs": b"c\n"}
    files |= {PART_NUMBERS + "kernel": b"d\n"}
    faults = {program: Fault(0) for program in ("network", "reboot")}
    return Card("card1", Settings(settings), files, ntp_enabled=True, faults=faults)


def _status(outcome: Outcome) -> Status | None:
    replies = outcome.replies
    return Status(Header.decode(replies[0][1]).status) if replies and len(replies[0][1]) >= HEADER_SIZE else None


def _play(job: str, operation: str, number: int = 1) -> tuple[Card, Outcome]:
    refused = card()
    refused.refusal = Refusal(operation, number, _ERROR)
    return foresee(refused, _ACTIONS[job], _PORTS)


OK, NO = Status.SUCCESS, Status.FAILURE
NTP, MANUAL = "time reference by NTP", "time reference by hand"
GET, SET = "IP configuration get", "IP configuration set"
# Job, what is refused and which of its kind, the reply's status or None, and what is told.
FORESEEN = [
    # The archive is then taken for a header.
    ("upload", "recv", 2, Status.WRONG_VERSION, f"warning recv() failed: {_ERROR}"),
    ("upload", "recv", 3, NO, f"warning recv() failed: {_ERROR}"),
    ("upload", "open firmware.tar.gz", 1, NO, f"warning fopen() failed: {_ERROR}"),
    ("upload", "write firmware.tar.gz", 1, NO, "warning fclose() failed"),
    ("upload", "close firmware.tar.gz", 1, OK, "warning fclose() failed"),
    ("upload", "remove firmware.tar.gz", 1, OK, f"warning Deleting firmware.tar.gz FAILED: {_ERROR}"),
    ("upload", "run", 1, NO, "Extracting files from archive failed"),
    ("upload", "wait", 1, NO, "Extracting files from archive failed"),
    ("upgrade", "wait", 2, OK, "warning Upgrade FAILED"),
    ("time reference get", "recv", 1, None, f"warning recv() failed: {_ERROR}"),
    ("time reference get", "open /tmp/uci.tmp", 1, NO, f"fopen() failed: {_ERROR}"),
    ("time reference get", "read /tmp/uci.tmp", 1, NO, f"fgets() failed or file is empty: {_ERROR}"),
    ("time reference get", "close /tmp/uci.tmp", 1, OK, f"fclose() FAILED: {_ERROR}"),
    (NTP, "recv", 2, NO, f"warning recv() failed: {_ERROR}"),
    (NTP, "open the lock", 1, NO, f"warning open() FAILED: {_ERROR}"),
    (NTP, "lock", 1, NO, f"warning flock() FAILED: {_ERROR}"),
    (NTP, "wait", 1, NO, f"system() FAILED: {_ERROR}"),
    (NTP, "open the marker", 1, NO, f"warning fopen() FAILED: {_ERROR}"),
    (NTP, "close the marker", 1, OK, f"warning fclose() FAILED: {_ERROR}"),
    (NTP, "unlock", 1, NO, f"warning flock() FAILED: {_ERROR}"),
    (NTP, "close the lock", 1, NO, f"warning close() FAILED: {_ERROR}"),
    (MANUAL, "set the clock", 1, NO, f"warning clock_settime() FAILED: {_ERROR}"),
    (GET, "run", 1, NO, "info Error VEM Interface 1 Config"),
    (GET, "sendto", 1, None, f"warning sendto() failed: {_ERROR}"),
    (SET, "recvfrom", 1, OK, f"warning recvfrom() failed: {_ERROR}"),
    (SET, "run", 1, NO, "warning Configuring network interfaces failed"),
    (SET, "run", 9, OK, "warning /etc/init.d/network restart FAILED"),
    (SET, "wait", 9, OK, f"warning system() failed: {_ERROR}"),
    ("reboot", "run", 1, NO, "warning reboot command failed"),
    ("reboot", "wait", 1, NO, f"system() FAILED: {_ERROR}"),
    ("versions", f"open {FLASH_DEVICE}", 1, OK, f"fopen() FAILED: {_ERROR}"),
    ("versions", "send", 2, OK, f"warning send() failed: {_ERROR}"),
    ("versions", "close the connection", 1, OK, f"warning Failed to close socket (N): {_ERROR}"),
    ("versions", "select", 1, None, f"warning select() failed: {_ERROR}"),
    ("versions", "select", 2, OK, "err tarvel-daemon terminated unexpectedly!"),
    ("versions", "accept", 1, None, f"warning accept() failed: {_ERROR}"),
]


@pytest.mark.parametrize(("job", "operation", "number", "status", "told"), FORESEEN)
def test_failure_is_answered_and_told(
    job: str, operation: str, number: int, status: Status | None, told: str
) -> None:
    future, outcome = _play(job, operation, number)
    assert _status(outcome) == status
    assert told in outcome.log + future.console


@pytest.mark.parametrize(
    ("operation", "gone"),
    [
        (f"open {DRAV_FILE}", b"DravHardware"),
        (f"read {FLASH_DEVICE}", b"BootLoader"),
        (f"stat {PART_NUMBERS}squashfs", b"BaseSystem"),
        (f"list {PART_NUMBERS}", b"kernel"),
    ],
)
def test_source_of_a_version_that_fails_is_left_out_and_no_other(operation: str, gone: bytes) -> None:
    replies = [_play("versions", what)[1].replies[0][1] for what in (operation, "nothing")]
    assert [line for line in replies[1].splitlines() if line not in replies[0].splitlines()][-1].count(gone) == 1
    assert replies[0].count(b"Component") == replies[1].count(b"Component") - 1


@pytest.mark.parametrize(
    ("operation", "number", "proto"),
    [("wait", 1, "static"), ("run", 2, "dhcp"), ("wait", 5, "dhcp"), ("run", 8, "static")],
)
def test_interface_is_set_or_stays(operation: str, number: int, proto: str) -> None:
    future, _ = _play(SET, operation, number)
    assert future.settings.committed["network.lanvemt2eth1.proto"] == proto


@pytest.mark.parametrize(
    ("operation", "marker"), [("lock", False), ("wait", True), ("open the marker", False), ("unlock", True)]
)
def test_marker_is_left_by_what_has_begun(operation: str, marker: bool) -> None:
    assert _play(NTP, operation)[0].replication_pending == marker
