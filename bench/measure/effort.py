# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How often everything is done."""

from dataclasses import dataclass

MEBIBYTE = 1 << 20


@dataclass(frozen=True)
class Effort:
    """Rounds of the quick jobs, of those that start programs, of starts, and of uploads."""

    quick: int = 1250
    turn: int = 8  # requests to one side before it is the other's turn
    shell: int = 500
    starts: int = 200
    uploads: int = 7
    upload_size: int = 256 * MEBIBYTE
    memory_sizes: tuple[int, ...] = (MEBIBYTE, 256 * MEBIBYTE, 1024 * MEBIBYTE)
    mixed: int = 20_000
    idle_seconds: int = 10
    client_starts: int = 300
    client_versions: int = 60
    archive_size: int = 200_000_000
    archive_rounds: int = 7
    cards: tuple[int, ...] = (1, 8, 64)
    growth_rounds: int = 15


FULL = Effort()
SHORT = Effort(
    quick=150,
    shell=60,
    starts=30,
    uploads=3,
    upload_size=64 * MEBIBYTE,
    memory_sizes=(MEBIBYTE, 64 * MEBIBYTE),
    mixed=4_000,
    idle_seconds=2,
    client_starts=60,
    client_versions=10,
    archive_size=40_000_000,
    archive_rounds=3,
    cards=(1, 8),
    growth_rounds=5,
)
