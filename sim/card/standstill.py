# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A slow card: its daemon stands still for a while, runs for a moment, and stands still again.

What reaches it waits in the kernel meanwhile, so that every answer comes, and most come late.
"""

import signal
import time

from daemon import Daemon

_MOMENT = 0.5  # seconds


class Standstill:
    def __init__(self, daemon: Daemon, seconds: float) -> None:
        """With 0 seconds it never stands still."""
        self._daemon = daemon
        self._seconds = seconds
        self._is_still = False
        self._next = time.monotonic() + _MOMENT if seconds > 0 else None

    def time_left(self) -> float | None:
        return None if self._next is None else max(0.0, self._next - time.monotonic())

    def turn(self) -> None:
        """To be called when the time is over; does nothing before."""
        if self._next is None or time.monotonic() < self._next:
            return
        self._is_still = not self._is_still
        self._daemon.signal(signal.SIGSTOP if self._is_still else signal.SIGCONT)
        self._next = time.monotonic() + (self._seconds if self._is_still else _MOMENT)

    def wake(self) -> None:
        """For a moment."""
        if self._is_still:
            self._is_still = False
            self._daemon.signal(signal.SIGCONT)
            self._next = time.monotonic() + _MOMENT
