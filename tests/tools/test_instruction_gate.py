# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The judgement of bench/gate on two counts of instructions."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench/count"))

from callgrind import parse  # noqa: E402
from comparison import compare, table  # noqa: E402

PROFILE = """\
fn=(1) main
0 10
cfn=(2) serve(int)
calls=2 0
0 500

fn=(2)
0 100
cfn=(3) work(int)
calls=4 0
0 400

fn=(3)
0 400
""".splitlines()


def verdict(before: float | None, now: float | None) -> str:
    return compare({"job": before}, {"job": now})[0].verdict


def is_acceptable(before: float | None, now: float | None) -> bool:
    return compare({"job": before}, {"job": now})[0].is_acceptable


def test_the_cost_of_a_call_is_that_of_all_it_calls() -> None:
    assert parse(PROFILE).per_call("serve") == 250


def test_a_function_is_found_by_its_number_when_its_name_was_told_at_a_call() -> None:
    assert parse(PROFILE).per_call("work") == 100


def test_a_line_without_a_cost_costs_nothing() -> None:
    assert parse([*PROFILE, "0"]).per_call("work") == 100


def test_a_function_that_calls_itself_is_not_counted_twice() -> None:
    lines = ["fn=(1) work", "0 60", "cfn=(1)", "calls=1 0", "0 30", "fn=(2) main", "cfn=(1)", "calls=1 0", "0 60"]
    assert parse(lines).inclusive["work"] == 60


def test_a_function_that_was_never_called_has_no_cost() -> None:
    assert parse(PROFILE).per_call("other") is None


def test_a_growth_of_five_percent_fails() -> None:
    assert verdict(10_000, 10_500) == "TOO MUCH"
    assert not is_acceptable(10_000, 10_500)


def test_a_growth_of_three_percent_passes() -> None:
    assert is_acceptable(10_000, 10_300)


def test_a_gain_is_named_and_passes() -> None:
    assert verdict(10_000, 9_000) == "gain"
    assert is_acceptable(10_000, 9_000)


def test_what_is_counted_no_more_fails() -> None:
    assert not is_acceptable(10_000, None)


def test_what_was_not_there_before_passes() -> None:
    assert verdict(None, 10_000) == "new"
    assert is_acceptable(None, 10_000)


def test_the_table_shows_both_counts_and_the_growth() -> None:
    assert table(compare({"job": 10_000}, {"job": 10_500}))[1].split() == ["job", "10000", "10500", "+5.0%", "TOO", "MUCH"]
