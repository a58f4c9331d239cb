# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon on a card: start it, stop it, watch it end; and the card's reboots."""

import json
import signal as signals
import socket
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from .errors import SimError
from .records import Records
from .waiting import wait_for

_FIRST_PASS_DONE = "successfully closed"
_LAST_DEVICE_BOUND = "BindToDevice (eth1) was successful"


@dataclass(frozen=True)
class Exit:
    """How the daemon ended: with an exit status or by a signal."""

    pid: int
    status: int | None
    signal: int | None


class Service(Records):
    """Part of a card."""

    _ready_since: int = 0

    @property
    def init_pid(self) -> int:
        raise NotImplementedError

    def _order(self, what: str, **details: Any) -> dict[str, Any]:
        """Has the card's init do something and returns its answer."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as init:
            init.connect(str(self.directory / "control.socket"))
            with init.makefile("rw") as stream:
                stream.write(json.dumps({"do": what, **details}) + "\n")
                stream.flush()
                answer: dict[str, Any] = json.loads(stream.readline() or '{"error": "no answer"}')
        if "error" in answer:
            raise SimError(f"{self.name}: {what}: {answer['error']}")
        return answer

    def wait_ready(self, timeout: float = 10) -> None:
        """Waits until the daemon has passed its event loop once after its last start."""

        def look() -> bool:
            lines = [line.text for line in self.log_lines(self._ready_since)]
            starts = [number for number, text in enumerate(lines) if text == "Starting..."]
            latest = lines[starts[-1] :] if starts else []
            bound = [number for number, text in enumerate(latest) if text == _LAST_DEVICE_BOUND]
            return bool(bound) and any(_FIRST_PASS_DONE in text for text in latest[bound[-1] :])

        wait_for(look, timeout, lambda: f"the daemon of {self.name} does not serve; {self._why_not()}")

    def _why_not(self) -> str:
        return f"{self._log_tail()}\nit ended {self.exits}, it printed:\n{self.console()[-2000:]}"

    @property
    def daemon_pid(self) -> int | None:
        """Of the command that was started, as seen from here; None if it does not run."""
        pid = self._order("state")["pid"]
        if pid is None:
            return None
        children = Path(f"/proc/{self.init_pid}/task/{self.init_pid}/children").read_text(encoding="ascii").split()
        return next((int(child) for child in children if _pid_inside(child) == pid), None)

    def stop_daemon(self) -> None:
        """Asks it to end, kills it after a second, and waits; it is not started again."""
        self._order("stop")

    def start_daemon(
        self,
        command: Sequence[str] | None = None,
        env: Mapping[str, str] | None = None,
        *,
        wait: bool = True,
        timeout: float = 10,
    ) -> None:
        """The command and environment, if given, are also those of later starts."""
        self._ready_since = self.log_mark()
        environment = None if env is None else dict(env)
        self._order("start", command=None if command is None else list(command), environment=environment)
        if wait:
            self.wait_ready(timeout)

    def kill_daemon(self, signal: int = signals.SIGKILL) -> None:
        """An accident: if the daemon is supervised it is started again."""
        self._ready_since = self.log_mark()
        self._order("kill", signal=int(signal))

    def supervise(self, on: bool) -> None:
        self._order("supervise", on=on)

    @property
    def exits(self) -> list[Exit]:
        """All ends of the daemon since the card was started or reset, oldest first."""
        return [Exit(**end) for end in self._order("state")["exits"]]

    def wait_exit(self, count: int = 1, timeout: float = 10) -> Exit:
        return wait_for(
            lambda: self.exits[count - 1] if len(self.exits) >= count else None,
            timeout,
            lambda: f"the daemon of {self.name} did not end; {self._log_tail()}",
        )

    @property
    def boots(self) -> int:
        boots: int = self._order("state")["boots"]
        return boots

    def wait_boot(self, count: int, timeout: float = 15) -> None:
        """Waits until the card has booted so many times, and the daemon serves."""
        mark = f"booted ({count})"
        wait_for(
            lambda: any(line.text == mark for line in self.log_lines(ident="card")),
            timeout,
            lambda: f"{self.name} did not boot; {self._log_tail()}",
        )
        everything = self.log_lines(ident=None)
        self._ready_since = next(n for n, line in enumerate(everything) if line.ident == "card" and line.text == mark)
        self.wait_ready(timeout)


def _pid_inside(pid: str) -> int:
    """The number that a process has in its innermost namespace."""
    for line in Path(f"/proc/{pid}/status").read_text(encoding="ascii", errors="replace").splitlines():
        if line.startswith("NSpid:"):
            return int(line.split()[-1])
    return 0
