# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The protocol as the system tests write it down, and simulated cards, are at hand here, too."""

import os
import shlex
import sys
from pathlib import Path

_ROOT = Path(__file__).resolve().parents[2]
_FOLDERS = ("tests/system", "sim", "packaging/ansible", "scripts/demo.d/fleet", "scripts/demo.d")
sys.path[:0] = [str(_ROOT / folder) for folder in _FOLDERS]

import pytest  # noqa: E402
from support import long_tests  # noqa: E402
from support.daemon import COMMAND  # noqa: E402

# For tarvelsim, which looks for the card's other programs next to the daemon.
os.environ["TARVELD"] = shlex.join(COMMAND)


def pytest_configure(config: pytest.Config) -> None:
    long_tests.declare(config)


def pytest_collection_modifyitems(config: pytest.Config, items: list[pytest.Item]) -> None:
    long_tests.leave_out(config, items)
