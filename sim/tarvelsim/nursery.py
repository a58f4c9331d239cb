# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The process that cards come from, and the first processes that it makes."""

import os
import select
import signal
import socket
import subprocess
import threading
from pathlib import Path

from . import namespaces, places
from .errors import SimError

_LOG = "nursery.log"
_LONGEST = 4096
_PROGRAM = places.ROOT / "sim/card"


class FirstProcess:
    """A card's. It does not run the card yet: it waits for devices and settings."""

    def __init__(self, name: str, directory: Path, pid: int, connection: socket.socket) -> None:
        self.pid = pid
        self._name = name
        self._directory = directory
        self._connection = connection
        self._stream = connection.makefile("r")
        self._descriptor: int | None = os.pidfd_open(pid)
        self._expect("apart")

    def boot(self, settings: str) -> None:
        """The settings are one line."""
        self._connection.sendall(settings.encode() + b"\n")
        self._expect("up")
        self._hang_up()

    def _expect(self, word: str) -> None:
        line = self._next_line()
        if line != word:
            raise SimError(f"{self._name} says {line} instead of {word}")

    def _next_line(self) -> str:
        line = self._stream.readline()
        if not line:
            raise SimError(f"{self._name} does not boot: {self._complaints()}")
        return line.strip()

    def _complaints(self) -> str:
        if self._descriptor is not None:
            self._ends_within(None)
        log = self._directory / "init.log"
        return log.read_text() if log.exists() else "the process that cards come from has ended"

    def _hang_up(self) -> None:
        self._stream.close()
        self._connection.close()

    @property
    def runs(self) -> bool:
        return self._descriptor is not None and not self._ends_within(0)

    def _ends_within(self, milliseconds: int | None) -> bool:
        assert self._descriptor is not None
        poll = select.poll()
        poll.register(self._descriptor, select.POLLIN)
        return bool(poll.poll(milliseconds))

    def end(self) -> None:
        """With all processes of the card."""
        self._hang_up()
        if self._descriptor is None:
            return
        if self.runs:
            signal.pidfd_send_signal(self._descriptor, signal.SIGKILL)
            self._ends_within(None)
        os.close(self._descriptor)
        self._descriptor = None


class Nursery:
    """Starts with the first card that it is asked for, and ends with the last one."""

    def __init__(self, run_dir: Path) -> None:
        self._run_dir = run_dir
        self._requests: socket.socket | None = None
        self._lock = threading.Lock()

    def make(self, name: str, directory: Path) -> FirstProcess:
        """May be called by several threads."""
        ours, its = socket.socketpair()
        with its, self._lock:
            if self._requests is None:
                self._requests = self._start()
            socket.send_fds(self._requests, [os.fsencode(directory)], [its.fileno()])
            answer = self._requests.recv(_LONGEST).decode()
        if not answer.isdigit():
            raise SimError(f"{name} does not start: {answer or (self._run_dir / _LOG).read_text()}")
        return FirstProcess(name, directory, int(answer), ours)

    def _start(self) -> socket.socket:
        ours, its = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        with its, open(self._run_dir / _LOG, "a", encoding="utf-8") as complaints:
            subprocess.Popen(
                [namespaces.PYTHON, "-IS", str(_PROGRAM)],
                stdin=its.fileno(),
                stdout=subprocess.DEVNULL,
                stderr=complaints,
                start_new_session=True,
            )
        return ours
