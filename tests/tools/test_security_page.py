# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""SECURITY.md claims nothing that no test shows, and no test of an attack is left out of it."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
ATTACKS = ROOT / "tests/system/attacks"
PAGE = (ROOT / "SECURITY.md").read_text(encoding="utf-8")


def rows_below(heading: str) -> list[list[str]]:
    """The cells of each row of the table there."""
    section = PAGE.split(f"\n## {heading}\n")[1].split("\n## ")[0]
    lines = [line for line in section.splitlines() if line.startswith("|")]
    return [[cell.strip() for cell in line.strip("|").split(" | ")] for line in lines[2:]]


def named_tests() -> list[str]:
    rows = rows_below("Attacks") + rows_below("What is no attack")
    return [name for cells in rows for name in re.findall(r"`([^`]+)`", cells[-1])]


def deviations() -> list[str]:
    return [cells[0] for cells in rows_below("Deviations of the hardened build")]


def written_tests() -> set[str]:
    return {
        f"{path.name}::{name}"
        for path in ATTACKS.glob("test_*.py")
        for name in re.findall(r"^def (test_\w+)\(", path.read_text(encoding="utf-8"), re.MULTILINE)
    }


def test_each_attack_names_a_test_that_exists() -> None:
    assert rows_below("Attacks")
    assert set(named_tests()) - written_tests() == set()


def test_each_test_of_an_attack_has_a_row() -> None:
    assert written_tests() - set(named_tests()) == set()


def test_each_deviation_names_a_file_that_asks_for_the_build() -> None:
    files = {name for cells in rows_below("Deviations of the hardened build") for name in re.findall(r"`([\w/]+\.\w+)`", cells[-1])}
    sources = {path.relative_to(ROOT / "src").as_posix() for path in (ROOT / "src").rglob("*.*")}
    question = re.compile(r"if constexpr \(hardened\) \{|\bhardened \?")
    asking = {name for name in sources if question.search((ROOT / "src" / name).read_text(encoding="utf-8"))}
    assert files == asking


def test_each_test_that_the_hardened_build_leaves_out_names_a_deviation() -> None:
    sources = (path.read_text(encoding="utf-8") for path in (ROOT / "tests/system").rglob("test_*.py"))
    reasons = {row for text in sources for row in re.findall(r"as_designed\(\s*\"([^\"]+)\"", text)}
    assert reasons
    assert [reason for reason in reasons if not any(row.startswith(reason) for row in deviations())] == []
