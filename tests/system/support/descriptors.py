# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A look at the descriptors of another process."""

import array
import contextlib
import ctypes
import fcntl
import os
import socket
import termios
from pathlib import Path

from tarvelsim.waiting import wait_for

from .peers import PATIENCE, TcpPeer

_PIDFD_GETFD = 438  # the same number on every architecture
TCP_USER_TIMEOUT = 18  # not among the names that mypy knows
_LIMIT, _SHORTER_LIMIT = 90_000, 1000  # milliseconds
_O_CLOEXEC = 0o2000000
_LOOKS = 50  # in a row; to log something takes a part of one


def descriptors(pid: int) -> dict[int, str]:
    """What each descriptor stands for. One that is closed at this moment may be missing."""
    found = {}
    for entry in Path(f"/proc/{pid}/fd").iterdir():
        with contextlib.suppress(FileNotFoundError):
            found[int(entry.name)] = os.readlink(entry)
    return found


def wait_descriptors(pid: int, expected: list[int]) -> None:
    """What a program has open for a moment itself, to write down that it was called, is no inheritance."""
    wait_for(lambda: sorted(descriptors(pid)) == expected, PATIENCE, lambda: f"{pid} has {descriptors(pid)}")


def is_closed_on_exec(pid: int, descriptor: int) -> bool:
    fields = dict(line.split(":\t") for line in Path(f"/proc/{pid}/fdinfo/{descriptor}").read_text().splitlines()[:4])
    return int(fields["flags"], 8) & _O_CLOEXEC != 0


def copy_of_descriptor(pid: int, descriptor: int) -> socket.socket:
    """The other process's own socket, not a new one: its options can be read."""
    process = os.pidfd_open(pid)
    try:
        libc = ctypes.CDLL(None, use_errno=True)
        copy = libc.syscall(_PIDFD_GETFD, process, descriptor, 0)
        if copy == -1:
            raise OSError(ctypes.get_errno(), "pidfd_getfd")
        return socket.socket(fileno=copy)
    finally:
        os.close(process)


def connection_of(pid: int) -> socket.socket:
    """A copy of the only connection that the process has, once it has accepted it."""
    return wait_for(lambda: _connection_of(pid), PATIENCE, lambda: "the daemon has no connection")


def _connection_of(pid: int) -> socket.socket | None:
    for descriptor, target in descriptors(pid).items():
        if not target.startswith("socket:"):
            continue
        copy = copy_of_descriptor(pid, descriptor)
        try:
            if copy.family == socket.AF_INET and copy.getpeername():
                return copy
        except OSError:
            pass  # not connected
        copy.close()
    return None


def shorten_limit(pid: int) -> None:
    """Of the time in which a reply must be taken, for the daemon's own connection, so that nobody waits for 90 s."""
    with connection_of(pid) as connection:
        assert connection.getsockopt(socket.IPPROTO_TCP, TCP_USER_TIMEOUT) == _LIMIT
        connection.setsockopt(socket.IPPROTO_TCP, TCP_USER_TIMEOUT, _SHORTER_LIMIT)


def wait_until_read(pid: int, peer: TcpPeer) -> None:
    """Returns when the daemon has read all that the client has sent."""
    with connection_of(pid) as connection:
        wait_for(
            lambda: _waiting(peer.socket, termios.TIOCOUTQ) == _waiting(connection, termios.FIONREAD) == 0,
            PATIENCE,
            lambda: "the daemon does not read",
        )


def wait_until_stuck(pid: int) -> None:
    """Returns when the daemon has slept for a while beside requests that it could read: it waits for a reply to be taken."""
    looks: list[bool] = []

    def is_stuck() -> bool:
        looks.append(_state(pid) == "S" and _waiting(connection, termios.FIONREAD) > 0)
        return len(looks) >= _LOOKS and all(looks[-_LOOKS:])

    with connection_of(pid) as connection:
        wait_for(is_stuck, PATIENCE, lambda: "the daemon goes on")


def _state(pid: int) -> str:
    return Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0]


def _waiting(connection: socket.socket, question: int) -> int:
    """Bytes sent and not acknowledged, or received and not read."""
    answer = array.array("i", [0])
    fcntl.ioctl(connection, question, answer)
    return answer[0]
