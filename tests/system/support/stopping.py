# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon held still, so that several things are ready for it at once."""

import os
import signal
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from tarvelsim import Card
from tarvelsim.waiting import wait_for

from .peers import PATIENCE


@contextmanager
def stopped(card: Card) -> Iterator[None]:
    """Inside the block the daemon does nothing; what it waits for when the block ends it sees all at once."""
    assert card.daemon.pid is not None
    pid: int = card.daemon.pid
    os.kill(pid, signal.SIGSTOP)
    try:
        wait_for(lambda: _state(pid) == "T", PATIENCE, lambda: "the daemon does not stop")
        yield
    finally:
        os.kill(pid, signal.SIGCONT)


def _state(pid: int) -> str:
    return Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rpartition(")")[2].split()[0]
