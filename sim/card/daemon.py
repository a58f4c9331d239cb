# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Keeps the daemon running, as the platform's supervisor does."""

import os
import signal
import time
from dataclasses import asdict, dataclass
from pathlib import Path

import delays
import programs
from settings import Settings

PATIENCE = 5.0  # seconds between asking the daemon to end and making it
_NAP = 0.002
# Ignored signals are inherited, and the real supervisor ignores none.
_IGNORED_BY_PYTHON = (signal.SIGPIPE, signal.SIGXFSZ)


@dataclass
class Exit:
    """How a process ended: with an exit status or by a signal."""

    pid: int
    status: int | None
    signal: int | None

    @staticmethod
    def of(pid: int, wait_status: int) -> "Exit":
        code = os.waitstatus_to_exitcode(wait_status)
        return Exit(pid, code if code >= 0 else None, -code if code < 0 else None)

    def to_json(self) -> dict[str, int | None]:
        return asdict(self)


class Daemon:
    """The supervised process and its history."""

    def __init__(self, command: list[str], environment: dict[str, str], console: Path) -> None:
        self.command = command
        self.environment = environment
        self.exits: list[Exit] = []
        self.pid: int | None = None
        self._console = console

    def start(self) -> None:
        """Raises OSError if there is no such program."""
        if self.pid is not None:
            return
        environment = {"PATH": programs.PATH, "HOME": "/", "LD_PRELOAD": programs.LINE_BUFFERING, **self.environment}
        append = os.O_WRONLY | os.O_CREAT | os.O_APPEND
        self.pid = os.posix_spawnp(
            self.command[0],
            self.command,
            environment,
            file_actions=[
                (os.POSIX_SPAWN_OPEN, 0, "/dev/null", os.O_RDONLY, 0),
                (os.POSIX_SPAWN_OPEN, 1, str(self._console), append, 0o644),
                (os.POSIX_SPAWN_DUP2, 1, 2),
            ],
            setsid=True,
            setsigdef=_IGNORED_BY_PYTHON,
        )

    def stop(self, patience: float = PATIENCE) -> None:
        """Asks the process to end, makes it end if it does not, and waits until it has."""
        if self.pid is None:
            return
        pid = self.pid
        os.kill(pid, signal.SIGTERM)
        deadline = time.monotonic() + patience
        ended = os.waitpid(pid, os.WNOHANG)
        while ended[0] == 0 and time.monotonic() < deadline:
            time.sleep(_NAP)
            ended = os.waitpid(pid, os.WNOHANG)
        if ended[0] == 0:
            os.kill(pid, signal.SIGKILL)
            ended = os.waitpid(pid, 0)
        self.note_exit(*ended)

    def signal(self, number: int) -> None:
        if self.pid is not None:
            os.kill(self.pid, number)

    def note_exit(self, pid: int, wait_status: int) -> bool:
        """Takes notice of an ended process; False if it was not the daemon."""
        if pid != self.pid:
            return False
        self.exits.append(Exit.of(pid, wait_status))
        self.pid = None
        return True


def end_all_others(settings: Settings) -> None:
    """Ends every other process of the card, as the last act before a reboot."""
    deadline = time.monotonic() + delays.LAST_WISH
    if _signal_all(signal.SIGTERM):
        delays.pause(settings, delays.LAST_WISH)
    _reap_all()
    while _signal_all(signal.SIGKILL if time.monotonic() >= deadline else signal.SIGTERM):
        _reap_all()
        time.sleep(_NAP)


def _signal_all(wish: signal.Signals) -> bool:
    try:
        os.kill(-1, wish)
        return True
    except ProcessLookupError:
        return False


def _reap_all() -> None:
    try:
        while os.waitpid(-1, os.WNOHANG)[0] != 0:
            pass
    except ChildProcessError:
        pass
