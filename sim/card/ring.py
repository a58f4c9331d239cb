# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What `logread` prints: the log and the daemon's output in one ring, of which the oldest lines fall out."""

import os
import threading
from collections import deque
from pathlib import Path

_SIZE = 65536


class Ring:
    """The supervisor hands each line that the daemon and its children print to the log, in the order of the output."""

    def __init__(self, path: Path, console: Path) -> None:
        self._path = path
        self._console = console
        self._console_read = 0
        self._lines: deque[bytes] = deque()
        self._size = 0
        self._lock = threading.Lock()

    def add(self, line: bytes) -> None:
        """A message of the log; what was printed before it comes before it."""
        with self._lock:
            self._take_console()
            self._append(line)

    def publish(self) -> None:
        with self._lock:
            self._take_console()
            self._path.write_bytes(b"".join(self._lines))

    def clear(self) -> None:
        """Empties it, as at a boot; what was printed until now is forgotten, too."""
        with self._lock:
            self._console_read = self._console_size()
            self._lines.clear()
            self._size = 0

    def _take_console(self) -> None:
        if self._console_size() == self._console_read:
            return  # as nearly always: a look at the size costs a tenth of opening it
        with self._console.open("rb") as console:
            console.seek(self._console_read)
            printed = console.read()
        complete = printed[: printed.rfind(b"\n") + 1]
        self._console_read += len(complete)
        for line in complete.splitlines(keepends=True):
            self._append(b"info tarveld: " + line)

    def _console_size(self) -> int:
        try:
            return os.stat(self._console).st_size
        except FileNotFoundError:
            return 0

    def _append(self, line: bytes) -> None:
        self._lines.append(line)
        self._size += len(line)
        while self._size > _SIZE:
            self._size -= len(self._lines.popleft())
