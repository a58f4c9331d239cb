# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""docs/testing.md times the steps that scripts/test has."""

import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs/testing.md").read_text(encoding="utf-8")
SCRIPT = (ROOT / "scripts/test").read_text(encoding="utf-8")

PRINT_PLAN = """
set -euo pipefail
source scripts/test.d/plan.sh
parts=$1 presets=(release asan)
wants() {{ [[ " $parts " == *" $1 "* ]]; }}
{plan}
printf '%s\\n' "${{names[@]}}"
"""


def steps_of(parts: str) -> list[str]:
    """As scripts/test plans them for these parts."""
    plan = re.search(r"^step .*?(?=^run_steps$)", SCRIPT, re.MULTILINE | re.DOTALL)
    assert plan
    command = ["bash", "-c", PRINT_PLAN.format(plan=plan[0]), "plan", parts]
    return subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True).stdout.splitlines()


def timed_steps() -> list[str]:
    table = PAGE.split("\n| Step | Seconds | Passed |\n")[1].split("\n\n")[0]
    return [line.split("|")[1].strip() for line in table.splitlines()[1:]]


def test_the_table_has_each_step_of_a_whole_run() -> None:
    parts = re.search(r'^all_parts="(.*)"$', SCRIPT, re.MULTILINE)
    assert parts
    assert timed_steps() == steps_of(parts[1])


def test_the_plan_is_read_as_it_is_made() -> None:
    assert steps_of("tidy") == ["build asan", "clang-tidy"]
