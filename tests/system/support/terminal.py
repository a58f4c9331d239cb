# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs the client on a terminal, as people do."""

import fcntl
import os
import pty
import re
import signal
import struct
import subprocess
import termios
import time
from collections.abc import Callable
from dataclasses import dataclass

from support.ctl import Ctl

ERASE = "\r\x1b[K"
QUESTION = b"[y/N]"


@dataclass(frozen=True)
class Session:
    code: int
    shown: str
    seconds: float

    @property
    def redrawn(self) -> list[str]:
        """What stood in the line that replaces itself, and in the others, without colours."""
        plain = re.sub(r"\x1b\[\d*m", "", self.shown)
        return [piece.split("\r\n")[0] for piece in plain.split(ERASE) if piece]


def on_terminal(
    ctl: Ctl,
    *words: str,
    columns: int = 80,
    says: str = "",
    interrupt_at: str = "",
    meanwhile: Callable[[], object] | None = None,
) -> Session:
    """Both streams and the input are the terminal. `says` is typed before anything is asked, but only after `meanwhile`,
    which happens while the question stands there, if there is one; Ctrl-C comes when `interrupt_at` is shown."""
    ours, theirs = pty.openpty()
    fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    start = time.monotonic()
    running = subprocess.Popen(
        [str(ctl.program), *words], stdin=theirs, stdout=theirs, stderr=theirs, env=ctl.environment
    )
    os.close(theirs)
    if meanwhile is None:
        os.write(ours, says.encode())
    shown = b""
    try:
        while piece := os.read(ours, 65536):
            shown += piece
            if interrupt_at and interrupt_at.encode() in shown:
                running.send_signal(signal.SIGINT)
                interrupt_at = ""
            if meanwhile is not None and QUESTION in shown:
                meanwhile()
                meanwhile = None
                os.write(ours, says.encode())
    except OSError:  # the other side is closed
        pass
    os.close(ours)
    return Session(running.wait(timeout=60), shown.decode(), time.monotonic() - start)
