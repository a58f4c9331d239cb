# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The voice of the demo: headings, plain words, and what programs say."""

import os
import sys
from collections.abc import Sequence

_PLAIN = not sys.stdout.isatty() or "NO_COLOR" in os.environ


def chapter(title: str) -> None:
    print(f"\n== {title}" if _PLAIN else f"\n\033[1m== {title}\033[0m", flush=True)


def say(sentence: str) -> None:
    print(sentence, flush=True)


def show(lines: Sequence[str], most: int | None = None) -> None:
    """What somebody else said: the card, or a program. Of many lines only the first ones, and how many there are more."""
    shown = lines if most is None or len(lines) <= most + 1 else [*lines[:most], f"... {len(lines) - most} more lines"]
    for line in shown:
        print(f"    {line}", flush=True)
