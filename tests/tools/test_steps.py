# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How scripts/test runs its steps, and what it says about them."""

import signal
import subprocess
import time
from collections.abc import Callable
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]

PATIENCE = 15.0  # seconds; only a test that fails waits that long

HEAD = """
set -euo pipefail
source scripts/test.d/run.sh
wants() { [ "$1" = wanted ]; }
logs=$1
"""


def await_that(condition: Callable[[], bool]) -> None:
    given_up = time.monotonic() + PATIENCE
    while not condition():
        assert time.monotonic() < given_up
        time.sleep(0.01)


def has_ended(pid: Path) -> bool:
    """The process whose number stands in the file."""
    try:
        return Path("/proc", pid.read_text().strip(), "stat").read_text().rpartition(")")[2].split()[0] == "Z"
    except FileNotFoundError:
        return True


class Steps:
    """Steps written as in scripts/test, the part "wanted" being asked for."""

    def __init__(self, logs: Path) -> None:
        self.logs = logs
        self.status = 0

    def took(self, **seconds: int) -> None:
        """The last run of each step."""
        for name, number in seconds.items():
            (self.logs / f"{name}.log.seconds").write_text(f"{number}\n")

    def script(self, *steps: str) -> str:
        return HEAD + "\n".join([*steps, "run_steps", "summary"])

    def run(self, *steps: str) -> list[str]:
        done = subprocess.run(["bash", "-c", self.script(*steps), "test", str(self.logs)], cwd=ROOT, capture_output=True, text=True)
        assert not done.stderr
        self.status = done.returncode
        return done.stdout.splitlines()


@pytest.fixture
def steps(tmp_path: Path) -> Steps:
    return Steps(tmp_path)


def test_each_step_says_which_of_how_many_it_is(steps: Steps) -> None:
    lines = steps.run("step wanted a true", "step other b true", "step wanted c true")
    assert [line.split()[:3] for line in lines[:3]] == [["2", "steps"], ["1/2", "a", "ok"], ["2/2", "c", "ok"]]
    assert steps.status == 0


def test_a_first_run_does_not_say_what_is_left(steps: Steps) -> None:
    assert "left" not in "".join(steps.run("step wanted a true", "step wanted b true"))


def test_what_is_left_is_told_by_the_last_run(steps: Steps) -> None:
    steps.took(a=80, b=600, c=10)
    lines = steps.run("step wanted a true", "step wanted b true", "step wanted c true")
    assert lines[0] == "3 steps, 12 min left"
    assert lines[1].endswith("1 passed     10 min left")
    assert lines[2].endswith("1 passed     10 s left")
    assert "left" not in lines[3]


def test_steps_side_by_side_take_as_long_as_the_longest(steps: Steps) -> None:
    steps.took(a=1, b=40, c=30)
    lines = steps.run("step wanted a true", "side_step wanted b true", "side_step wanted c true", "join_steps")
    assert lines[0] == "3 steps, 41 s left"
    assert lines[1].endswith("40 s left")


def test_steps_of_unknown_length_are_told_apart(steps: Steps) -> None:
    steps.took(a=7)
    assert steps.run("step wanted a true", "step wanted b true")[0] == "2 steps, 7 s left, and 1 not timed yet"


def test_the_seconds_of_a_run_are_kept(steps: Steps) -> None:
    steps.run("step wanted a true")
    assert (steps.logs / "a.log.seconds").read_text().strip().isdigit()


def test_a_failed_step_shows_its_log_and_fails_the_run(steps: Steps) -> None:
    lines = steps.run("step wanted a bash -c 'echo what went wrong; exit 3'", "step wanted b true")
    assert "FAILED" in lines[1]
    assert lines[2] == "    what went wrong"
    assert "failed: a" in lines
    assert lines[-1] == "1 passed, 1 failed"
    assert steps.status == 1


def test_the_end_names_the_tests_that_failed(steps: Steps) -> None:
    said_by_pytest = "printf '%s\\n' FAILED: 'FAILED tests/a.py::test_b - assert 1 == 2' 'ERROR tests/c.py'; false"
    said_by_ctest = "printf '\\t%s\\n' '165 - net:Peer.Ends (Skipped)' ' 47 - net:Peer.Begins (Failed)' '3 - a:B.C (Timeout)'; false"
    lines = steps.run(f'step wanted a eval "{said_by_pytest}"', f'step wanted b eval "{said_by_ctest}"')
    assert lines[lines.index("failed: a") : -2] == [
        "failed: a",
        "    tests/a.py::test_b - assert 1 == 2",
        "    tests/c.py",
        "failed: b",
        "    net:Peer.Begins",
        "    a:B.C",
    ]


def test_the_words_of_a_command_stay_as_they_are(steps: Steps) -> None:
    steps.run("step wanted a printf '%s\\n' 'two words' '$HOME'")
    assert (steps.logs / "a.log").read_text() == "two words\n$HOME\n"


def test_a_part_that_is_not_there_is_refused() -> None:
    done = subprocess.run([ROOT / "scripts" / "test", "unit", "quick"], capture_output=True, text=True)
    assert done.returncode == 2
    assert 'there is no part "quick"' in done.stderr


def test_a_step_that_hangs_is_ended_with_all_that_it_started(steps: Steps) -> None:
    pid = steps.logs / "pid"
    hangs = f"step wanted a sh -c 'sleep 1000 & echo $! >{pid}; wait'"
    lines = steps.run("step_limit=1", hangs, "step wanted b true")
    assert lines[1].startswith(" 1/2  a") and "FAILED" in lines[1]
    assert lines[2].strip() == "ended after 1 s, not being done"
    assert lines[3].startswith(" 2/2  b") and " ok " in lines[3]
    assert steps.status == 1
    await_that(lambda: has_ended(pid))


@pytest.mark.parametrize("ending", [signal.SIGINT, signal.SIGTERM])
def test_nothing_goes_on_when_the_run_is_ended(steps: Steps, ending: int) -> None:
    pid = steps.logs / "pid"
    script = steps.script(f"step wanted a sh -c 'sleep 1000 & echo $! >{pid}.new; mv {pid}.new {pid}; wait'")
    # Whoever runs the tests in the background has them ignore Ctrl-C, and a shell does not listen to what was ignored.
    shell = ["env", "--default-signal=INT", "bash", "-c", script, "test", str(steps.logs)]
    running = subprocess.Popen(shell, cwd=ROOT, stdout=subprocess.DEVNULL)
    await_that(pid.exists)
    running.send_signal(ending)
    assert running.wait(PATIENCE) == 130
    await_that(lambda: has_ended(pid))
