# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A server on the measured card: the daemon or one of its floors."""

import os
import signal
import socket
import subprocess
import time
from collections.abc import Sequence
from pathlib import Path

import cores
import paths  # noqa: F401
from tarvelsim import Card, SimError, namespaces
from wire import request

_PATIENCE = 10.0
_NAP = 0.01
_ENVIRONMENT = {"PATH": "/run/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/"}


class Server:
    """Runs on the card, pinned to the core of the work, from its making to stop()."""

    def __init__(self, card: Card, name: str, command: Sequence[str], port: int, kind: str = "tcp") -> None:
        self.name = name
        self.address = f"{card.address('eth0')}:{port}%lan0"
        self._kind = kind
        entering = namespaces.enter_card_command(card.init_pid, command)
        self._process = subprocess.Popen(
            cores.pinned(cores.WORK, entering),
            env=_ENVIRONMENT,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL,
        )
        self._wait_until_served()
        self.pid = self._inner_pid()

    def _inner_pid(self) -> int:
        pid = namespaces.only_child(self._process.pid)
        if pid is None:
            raise SimError(f"{self.name} has ended")
        return pid

    def _wait_until_served(self) -> None:
        deadline = time.monotonic() + _PATIENCE
        while not self._answers():
            if self._process.poll() is not None or time.monotonic() > deadline:
                raise SimError(f"{self.name} does not serve")
            time.sleep(_NAP)

    def _answers(self) -> bool:
        host, port = self.address.split("%")[0].split(":")
        kind = socket.SOCK_STREAM if self._kind == "tcp" else socket.SOCK_DGRAM
        with socket.socket(socket.AF_INET, kind) as probe:
            probe.settimeout(_PATIENCE if self._kind == "tcp" else 0.1)
            try:
                probe.connect((host, int(port)))
                probe.send(request(0x42))
                return len(probe.recv(100)) == len(request(0x42))
            except OSError:
                return False

    def cpu(self) -> int:
        """Nanoseconds that the process itself, without the programs that it started, has computed."""
        return int(Path(f"/proc/{self.pid}/schedstat").read_text(encoding="ascii").split()[0])

    def wakeups(self) -> int:
        return sum(self._status(f"{kind}voluntary_ctxt_switches") for kind in ("", "non"))

    def peak_memory(self) -> int:
        """Kilobytes that were resident at most."""
        return self._status("VmHWM")

    def _status(self, field: str) -> int:
        lines = Path(f"/proc/{self.pid}/status").read_text(encoding="ascii").splitlines()
        return next(int(line.split()[1]) for line in lines if line.startswith(field + ":"))

    def private_memory(self) -> int:
        """Kilobytes that nobody else can use: written to, and no other process shares them."""
        lines = Path(f"/proc/{self.pid}/smaps_rollup").read_text(encoding="ascii").splitlines()
        return sum(int(line.split()[1]) for line in lines if line.startswith("Private_Dirty:"))

    def stop(self) -> None:
        os.kill(self.pid, signal.SIGKILL)
        self._process.wait()
