# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What each call is good for, by its beginning: the operation whose failure the model knows.

The beginning is as strace prints it, with the file or socket behind each descriptor. A call that no row knows is wrong:
nobody has said what its failure should be. Several rows can be steps of one operation.
"""

import re
from collections.abc import Sequence
from dataclasses import dataclass


@dataclass(frozen=True)
class Row:
    call: str  # a regular expression
    operation: str | None  # None: its failure is not noticed at all
    lingers: bool = False  # what the failed call was for goes on, and nobody waits for it


_LINES = r"/tmp/uci\.tmp|/tmp/\w+_pnr_assy|/dev/mtd0ro|/etc/pnr/[^\">]+"
_ARCHIVE = r"\d+</tmp/upgrade/firmware\.tar\.gz>"
_LOCK = r"\d+</var/timesettings\.lock>"
ROWS = (
    # The loop: the only calls whose failure ends the daemon.
    Row(r"p?select6?\(|_newselect\(", "select"),
    Row(r"accept4?\(", "accept"),
    # Messages.
    Row(r"recv(from)?\(\d+<TCP", "recv"),
    Row(r"send(to)?\(\d+<TCP", "send"),
    Row(r"close\(\d+<TCP", "close the connection"),
    Row(r"recvfrom\(\d+<UDP", "recvfrom"),
    Row(r"sendto\(\d+<UDP", "sendto"),
    Row(r"setsockopt\(\d+<TCP[^>]*->[^>]*>, (SOL_SOCKET, SO_KEEPALIVE|SOL_TCP, TCP_)", None),
    # Part numbers, versions, and what the settings tool has written.
    Row(rf'openat\([^,]*, "({_LINES})"', r"open \1"),
    Row(rf"read\(\d+<({_LINES})>", r"read \1"),
    Row(rf"close\(\d+<({_LINES})>", r"close \1"),
    Row(r'newfstatat\(AT_FDCWD[^,]*, "(/etc/pnr/[^"]+)"', r"stat \1"),
    Row(r'openat\([^,]*, "/etc/pnr/", ', "list /etc/pnr/"),
    Row(r"newfstatat\(\d+</etc/pnr>", "list /etc/pnr/"),
    Row(r"getdents64\(\d+</etc/pnr>, \S+ /\* 0 entries", "list /etc/pnr/"),
    Row(r"getdents64\(\d+</etc/pnr>, \S+ /\* [1-9]", "list /etc/pnr/"),
    Row(r"close\(\d+</etc/pnr>", None),
    # An upload.
    Row(r'openat\([^,]*, "firmware\.tar\.gz"', "open firmware.tar.gz"),
    Row(rf"newfstatat\({_ARCHIVE}", None),  # a hint for the size of the stream's buffer
    Row(rf"write\({_ARCHIVE}", "write firmware.tar.gz"),
    Row(rf"close\({_ARCHIVE}", "close firmware.tar.gz"),
    Row(r'unlink\("firmware\.tar\.gz"', "remove firmware.tar.gz"),
    # The time reference.
    Row(r'access\("/etc/rc\.d/S65ntpd"', "look for the start link"),
    Row(r'openat\([^,]*, "/var/timesettings\.lock"', "open the lock"),
    Row(rf"flock\({_LOCK}, LOCK_EX", "lock"),
    Row(rf"flock\({_LOCK}, LOCK_UN", "unlock"),
    Row(rf"close\({_LOCK}", "close the lock"),
    Row(r'openat\([^,]*, "/var/timesettings\.replication"', "open the marker"),
    Row(r"close\(\d+</var/timesettings\.replication>", "close the marker"),
    Row(r"clock_settime\(", "set the clock"),
    Row(r'newfstatat\(AT_FDCWD[^,]*, "/etc/localtime"', None),  # the date is UTC wherever the card is
    # Programs.
    Row(r"(clone3?|v?fork)\(", "run"),
    Row(r"mmap\(NULL, .*MAP_STACK", "run"),
    Row(r"wait4\(", "wait", lingers=True),
    Row(r"rt_sigaction\(SIG(INT|QUIT), |rt_sigprocmask\(SIG_(BLOCK|SETMASK), |munmap\(", None),
    # What is told.
    Row(r"write\(1<", "print"),
    Row(r"write\(2<", "print an error"),
    Row(r"newfstatat\(1<", None),
    Row(r"sendto\(\d+<UNIX", None),  # the C library connects to the log anew, and says it again
    # libxml2, which looks where it is.
    Row(r"getcwd\(", None),
)


def row_of(line: str) -> Row | None:
    return next((row for row in ROWS if re.match(row.call, line)), None)


def operation_of(row: Row, line: str) -> str | None:
    found = re.match(row.call, line)
    return None if row.operation is None or found is None else found.expand(row.operation)


def number_of(row: Row, line: str, earlier: Sequence[str]) -> int:
    """Which of its kind the operation is, if these calls were made before."""
    operation = operation_of(row, line)
    same = (other for other in earlier if row_of(other) == row and operation_of(row, other) == operation)
    return 1 + sum(1 for _ in same)
