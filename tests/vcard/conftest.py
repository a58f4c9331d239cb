# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Fixtures for tests on a virtual card; they run inside the network namespace that scripts/vcard lays the cables in."""

import socket
import sys
from collections.abc import Iterator
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/system"))
sys.path.append(str(ROOT / "sim"))

from card import CABLES, VirtualCard  # noqa: E402


def pytest_sessionstart(session: pytest.Session) -> None:
    if not set(CABLES.values()) <= {name for _, name in socket.if_nameindex()}:
        pytest.exit("there is no cable to plug a card in: start these tests with scripts/vcard test", returncode=2)


@pytest.fixture(scope="module")
def card(tmp_path_factory: pytest.TempPathFactory) -> Iterator[VirtualCard]:
    """One card for the tests of a file: they leave it as it was."""
    started = VirtualCard(tmp_path_factory.mktemp("card"))
    yield started
    started.close()


@pytest.fixture
def fresh_card(tmp_path: Path) -> Iterator[VirtualCard]:
    """A card of its own, as it left the factory."""
    started = VirtualCard(tmp_path)
    yield started
    started.close()
