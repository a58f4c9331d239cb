# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon on a card: start it, stop it, watch it end."""

import signal as signals
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path

from .orders import Orders
from .records import Records
from .waiting import wait_for

# The daemon begins with a connection that nobody has made; its first pass through the loop closes that, and says so.
_FIRST_PASS_DONE = "successfully closed"
_LAST_DEVICE_BOUND = "BindToDevice (eth1) was successful"


@dataclass(frozen=True)
class Exit:
    """How the daemon ended: with an exit status or by a signal."""

    pid: int
    status: int | None
    signal: int | None

    @property
    def code(self) -> int | None:
        """As the platform's supervisor tells it: 134 for an abort."""
        return self.status if self.signal is None else 128 + self.signal


class Daemon:
    def __init__(self, orders: Orders, records: Records, init_pid: Callable[[], int]) -> None:
        self._orders = orders
        self._records = records
        self._init_pid = init_pid
        self._started_since = 0

    def will_start(self, since: int) -> None:
        """The start that wait_ready() waits for is logged behind this mark."""
        self._started_since = since

    def wait_ready(self, timeout: float = 10) -> None:
        """Waits until the daemon has passed its event loop once after its last start."""

        def look() -> bool:
            lines = [line.text for line in self._records.log_lines(self._started_since)]
            starts = [number for number, text in enumerate(lines) if text == "Starting..."]
            latest = lines[starts[-1] :] if starts else []
            bound = [number for number, text in enumerate(latest) if text == _LAST_DEVICE_BOUND]
            return bool(bound) and any(_FIRST_PASS_DONE in text for text in latest[bound[-1] :])

        wait_for(look, timeout, lambda: f"the daemon of {self._records.name} does not serve; {self._why_not()}")

    def _why_not(self) -> str:
        return f"{self._records.log_tail()}\nit ended {self.exits}, it printed:\n{self._records.console()[-2000:]}"

    @property
    def pid(self) -> int | None:
        """Of the command that was started, as seen from here; None if it does not run."""
        pid = self._orders.give("state")["pid"]
        if pid is None:
            return None
        init = self._init_pid()
        children = Path(f"/proc/{init}/task/{init}/children").read_text(encoding="ascii").split()
        return next((int(child) for child in children if _pid_inside(child) == pid), None)

    def stop(self) -> None:
        """Asks it to end, kills it after five seconds, and waits; it is not started again."""
        self._orders.give("stop")

    def start(
        self,
        command: Sequence[str] | None = None,
        env: Mapping[str, str] | None = None,
        *,
        wait: bool = True,
        timeout: float = 10,
    ) -> None:
        """The command and environment, if given, are also those of later starts."""
        self.will_start(self._records.log_mark())
        environment = None if env is None else dict(env)
        self._orders.give("start", command=None if command is None else list(command), environment=environment)
        if wait:
            self.wait_ready(timeout)

    def kill(self, signal: int = signals.SIGKILL) -> None:
        """An accident: if the daemon is supervised it is started again."""
        self.will_start(self._records.log_mark())
        self._orders.give("kill", signal=int(signal))

    def supervise(self, on: bool) -> None:
        self._orders.give("supervise", on=on)

    @property
    def exits(self) -> list[Exit]:
        """All ends of the daemon since the card was started or reset, oldest first."""
        return [Exit(**end) for end in self._orders.give("state")["exits"]]

    def wait_exit(self, count: int = 1, timeout: float = 10) -> Exit:
        return wait_for(
            lambda: self.exits[count - 1] if len(self.exits) >= count else None,
            timeout,
            lambda: f"the daemon of {self._records.name} did not end; {self._records.log_tail()}",
        )


def _pid_inside(pid: str) -> int:
    """The number that a process has in its innermost namespace."""
    for line in Path(f"/proc/{pid}/status").read_text(encoding="ascii", errors="replace").splitlines():
        if line.startswith("NSpid:"):
            return int(line.split()[-1])
    return 0
