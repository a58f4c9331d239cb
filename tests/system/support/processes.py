# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The processes of a card, seen from outside."""

import os
from pathlib import Path

from tarvelsim import Card


def processes_running(card: Card, program: str) -> list[int]:
    """Those of the card whose command line begins with the program."""
    card_namespace = os.readlink(f"/proc/{card.init_pid}/ns/pid")
    found = []
    for entry in Path("/proc").iterdir():
        if not entry.name.isdigit():
            continue
        try:
            words = (entry / "cmdline").read_bytes().split(b"\0")
            if words[0] == program.encode() and os.readlink(entry / "ns/pid") == card_namespace:
                found.append(int(entry.name))
        except OSError:
            pass  # ended meanwhile
    return found
