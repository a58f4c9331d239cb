# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Tests that take minutes run when they are asked for."""

import pytest


def declare(config: pytest.Config) -> None:
    config.addinivalue_line("markers", "long: takes minutes; run with -m long only")


def leave_out(config: pytest.Config, items: list[pytest.Item]) -> None:
    if "long" not in config.getoption("markexpr"):
        short = [item for item in items if not item.get_closest_marker("long")]
        config.hook.pytest_deselected(items=[item for item in items if item not in short])
        items[:] = short
