# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Simulated cards on a simulated LAN, for tests and experiments. See sim/README.md."""

from .card import Card
from .errors import CommandFailed, NotInLan, SimError, WaitTimeout
from .lan import Lan
from .launch import run_in_lan
from .options import CardOptions
from .records import LogLine
from .service import Exit

__all__ = [
    "Card",
    "CardOptions",
    "CommandFailed",
    "Exit",
    "Lan",
    "LogLine",
    "NotInLan",
    "SimError",
    "WaitTimeout",
    "run_in_lan",
]
