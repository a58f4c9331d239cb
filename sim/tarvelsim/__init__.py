# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Simulated cards on a simulated LAN, for tests and experiments. See sim/README.md."""

from .card import Card
from .daemon import Exit
from .errors import CommandFailed, NotInLan, SimError, WaitTimeout
from .lan import Lan
from .launch import run_in_lan
from .link import Link
from .options import FAST_DELAYS, REAL_DELAYS, CardOptions
from .records import LogLine

__all__ = [
    "Card",
    "CardOptions",
    "CommandFailed",
    "Exit",
    "FAST_DELAYS",
    "Lan",
    "Link",
    "LogLine",
    "NotInLan",
    "REAL_DELAYS",
    "SimError",
    "WaitTimeout",
    "run_in_lan",
]
