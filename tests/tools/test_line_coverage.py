# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What is made of the lines that the unit tests reached."""

import subprocess
from pathlib import Path

import pytest

SCRIPT = Path(__file__).resolve().parents[2] / "scripts/test.d/coverage.awk"

LINES = """SF:client/a.cpp
FN:1,_Z1av
DA:1,5
DA:2,0
DA:3,0
DA:4,0
DA:5,1
DA:7,0
LF:99
LH:1
end_of_record
SF:clients/b.cpp
DA:1,0
end_of_record
SF:client/wire/c.h
DA:10,1
DA:11,12
DA:12,0
DA:14,0
end_of_record
"""


def judged(enough: str, folder: str = "client") -> tuple[int, list[str]]:
    command = ["awk", "-v", f"folder={folder}", "-v", f"enough={enough}", "-f", str(SCRIPT)]
    done = subprocess.run(command, input=LINES, capture_output=True, text=True)
    assert not done.stderr
    return done.returncode, done.stdout.splitlines()


def test_lines_that_were_not_reached_are_named() -> None:
    assert judged("0")[1] == [
        "note: not reached: client/a.cpp 2-4 7",
        "note: not reached: client/wire/c.h 12 14",
        "note: 40.0% of 10 lines of client/ are reached by the unit tests",
    ]


@pytest.mark.parametrize(("enough", "status"), [("39.9", 0), ("40", 0), ("40.1", 1)])
def test_the_share_decides(enough: str, status: int) -> None:
    assert judged(enough)[0] == status


def test_nothing_is_never_enough() -> None:
    assert judged("0", "src") == (1, ["note: 0.0% of 0 lines of src/ are reached by the unit tests"])
