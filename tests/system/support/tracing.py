# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon with its system calls written down, or made to fail, by strace."""

from collections.abc import Sequence
from pathlib import Path

from tarvelsim import Card

_TRACE_IN_CARD = "/run/card/trace"
# The leak checker cannot run in a traced process; it does its work in all other tests.
_ENVIRONMENT = {"ASAN_OPTIONS": "detect_leaks=0"}


class Tracer:
    def __init__(self, card: Card, daemon: Sequence[str]) -> None:
        self._card = card
        self._daemon = list(daemon)

    @property
    def path(self) -> Path:
        return self._card.directory / "trace"

    def start(self, *options: str, wait: bool = True) -> None:
        """Stops the daemon and starts it again, traced. It keeps its own process: its end is seen as it is."""
        self._card.daemon.supervise(False)
        self._card.daemon.stop()
        command = ["strace", "-D", "-qq", "-o", _TRACE_IN_CARD, *options, *self._daemon]
        self._card.daemon.start(command, _ENVIRONMENT, wait=wait)

    def inject(self, *faults: str, path: str | None = None, wait: bool = True) -> None:
        """Faults are like "select:error=EBADF:when=2". With a path only the calls that concern that file count."""
        names = ",".join(fault.partition(":")[0] for fault in faults)
        options = ["-e", f"trace={names}"]
        for fault in faults:
            options += ["-e", f"inject={fault}"]
        if path is not None:
            options += ["-P", path]
        self.start(*options, wait=wait)

    def ordinal(self, call: str) -> int:
        """Which of the calls of its name the last one that begins like this is, in a start until the daemon serves.

        Starts the daemon to find out. Libraries and sanitizers make calls of their own before.
        """
        name = call.partition("(")[0]
        self.start("-e", f"trace={name}", "-e", "signal=none")
        return max(number for number, line in enumerate(self.lines(), 1) if line.startswith(call))

    def lines(self) -> list[str]:
        return self.path.read_text(encoding="utf-8").splitlines()
