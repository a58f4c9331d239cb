# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Fixtures for the tests of the measurements; they run inside a simulated LAN, as scripts/bench does."""

import sys
from collections.abc import Iterator
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench/measure"))

from card import measured_card, swallowed_log  # noqa: E402
from tarvelsim import Card, Lan  # noqa: E402


@pytest.fixture(scope="module")
def measured() -> Iterator[Card]:
    """A card to measure on, with a few installed components."""
    with measured_card(Lan.current(), files=3) as card, swallowed_log(card):
        yield card
