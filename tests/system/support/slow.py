# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Makes a card slow, as a busy machine or a small processor does."""

import os
import signal
import threading
from collections.abc import Iterator
from contextlib import contextmanager
from pathlib import Path

from tarvelsim import Card

TURN = 0.1  # seconds; each program that the daemon runs costs it about one turn
SHARE = TURN / 20


def _seconds_on_processor(process: int) -> float:
    return int(Path(f"/proc/{process}/schedstat").read_text().split()[0]) / 1e9


def _wants_processor(process: int) -> bool:
    return Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0] == "R"


def _use_share(process: int, ending: threading.Event) -> None:
    """However many others want the processor: who gets none of it is not slow, but stands still."""
    before = _seconds_on_processor(process)
    while not ending.wait(SHARE):
        if not _wants_processor(process) or _seconds_on_processor(process) - before >= SHARE:
            break


def _take_turns(process: int, ending: threading.Event) -> None:
    while not ending.is_set():
        _use_share(process, ending)
        os.kill(process, signal.SIGSTOP)
        ending.wait(TURN - SHARE)
        os.kill(process, signal.SIGCONT)


@contextmanager
def slowed(card: Card) -> Iterator[None]:
    """Lets the card's daemon work for one part of twenty of its time only, and stand still for the others."""
    process = card.daemon.pid
    assert process is not None
    ending = threading.Event()
    turns = threading.Thread(target=_take_turns, args=(process, ending))
    turns.start()
    try:
        yield
    finally:
        ending.set()
        turns.join()


NAP = 1.0  # seconds: longer than a card is listened to
AWAKE = 0.1


def _take_naps(process: int, woken: threading.Event, ending: threading.Event) -> None:
    woken.wait()
    while not ending.wait(NAP):
        os.kill(process, signal.SIGCONT)
        ending.wait(AWAKE)
        os.kill(process, signal.SIGSTOP)


@contextmanager
def napping(card: Card) -> Iterator[threading.Event]:
    """Stops the card's daemon until it is woken, and lets it work now and then from then on.

    Whatever it is asked it answers late, in the order in which it was asked.
    """
    process = card.daemon.pid
    assert process is not None
    woken, ending = threading.Event(), threading.Event()
    naps = threading.Thread(target=_take_naps, args=(process, woken, ending))
    os.kill(process, signal.SIGSTOP)
    naps.start()
    try:
        yield woken
    finally:
        ending.set()
        woken.set()
        naps.join()
        os.kill(process, signal.SIGCONT)
