# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

import subprocess
from pathlib import Path

PROGRAM = Path(__file__).resolve().parents[2] / "scripts" / "test.d" / "totals.awk"


def totals(log: str) -> list[int]:
    """Passed, failed and skipped, as the summary of all steps counts them."""
    run = subprocess.run(["awk", "-f", str(PROGRAM)], input=log, capture_output=True, text=True, check=True)
    return [int(word) for word in run.stdout.split()]


def test_a_log_without_a_test_runner_counts_nothing() -> None:
    assert totals("[49/49] Linking CXX executable tarveld\n") == [0, 0, 0]


def test_ctest_tells_how_many_of_all_failed() -> None:
    assert totals("95% tests passed, 2 tests failed out of 40\n") == [38, 2, 0]


def test_pytest_tells_each_number() -> None:
    assert totals("=== 1 failed, 11 passed, 3 skipped in 0.25s ===\n") == [11, 1, 3]


def test_an_error_in_a_fixture_is_a_failure() -> None:
    assert totals("2 passed, 1 error in 3.10s\n") == [2, 1, 0]


def test_several_runners_are_added_up() -> None:
    assert totals("100% tests passed, 0 tests failed out of 5\n7 passed in 61.25s (0:01:01)\n") == [12, 0, 0]
