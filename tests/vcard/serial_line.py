# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The second serial line of the virtual card, on which a shell on the card answers one command at a time."""

import contextlib
import socket
import time
from pathlib import Path

_READY = b"@ready"


class CardTimeout(AssertionError):
    """The card did not do in time what it was expected to do."""


class SerialLine:
    def __init__(self, path: Path, patience: float = 30.0) -> None:
        self._patience = patience
        self._asked = 0
        self._buffer = b""
        self._socket = self._connect(path)

    def _connect(self, path: Path) -> socket.socket:
        deadline = time.monotonic() + self._patience
        while True:
            line = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
            try:
                line.connect(str(path))
                return line
            except OSError:
                line.close()
                if time.monotonic() > deadline:
                    raise CardTimeout("the emulator does not offer its serial line") from None
                time.sleep(0.01)

    def close(self) -> None:
        self._socket.close()

    def _read_until(self, mark: bytes) -> bytes:
        """What comes before the line that begins with mark, and that line's rest."""
        deadline = time.monotonic() + self._patience
        while True:
            before, found, after = self._buffer.partition(mark)
            if found and b"\n" in after:
                rest, _, self._buffer = after.partition(b"\n")
                return before + b"\0" + rest
            self._socket.settimeout(max(0.01, deadline - time.monotonic()))
            try:
                received = self._socket.recv(65536)
            except TimeoutError:
                raise CardTimeout(f"no {mark!r} from the card, only {self._buffer[-500:]!r}") from None
            if not received:
                raise CardTimeout("the emulator has ended")
            self._buffer += received

    def wait_until_ready(self) -> None:
        """The card has booted: also after a reboot, of which the line sees the next start."""
        self._read_until(_READY)

    def ask(self, command: str) -> tuple[int, str]:
        """Exit status and output of a shell command on the card."""
        self._asked += 1
        self._socket.sendall(f"{self._asked} {command}\n".encode())
        answer = self._read_until(b"\n@%d " % self._asked)
        output, _, status = answer.rpartition(b"\0")
        return int(status), output.decode(errors="replace")

    def __enter__(self) -> "SerialLine":
        return self

    def __exit__(self, *_: object) -> None:
        with contextlib.suppress(OSError):
            self.close()
