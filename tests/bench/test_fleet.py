# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""scripts/bench --fleet measures what it says it does: each card answers."""

import os
import re
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
CARDS, LANS = 5, 4  # two on each, so that the last has none
JOBS = ("versions by address", "firmware upload of 1 MB", "firmware upgrade, 100 at a time", "ip rescue")
FOUND = {"discover": 2 * CARDS} | dict.fromkeys(JOBS, CARDS)


def bench(*words: str, **more: str) -> "subprocess.CompletedProcess[str]":
    command = ["/usr/bin/python3", str(ROOT / "bench/fleet"), *words]
    environment = {name: value for name, value in os.environ.items() if name != "TARVEL_LAN"} | more
    return subprocess.run(command, env=environment, capture_output=True, text=True, timeout=500, check=False)


@pytest.fixture(scope="module")
def printed() -> dict[str, str]:
    """What is told of each thing."""
    done = bench("--cards", str(CARDS), "--lans", str(LANS))
    assert done.returncode == 0, done.stderr
    return {what.strip(): told.strip() for what, _, told in (line.partition(":") for line in done.stdout.splitlines())}


@pytest.mark.parametrize("job", FOUND)
def test_all_cards_take_part(printed: dict[str, str], job: str) -> None:
    seconds = r"[\d.]+ s, "
    assert re.fullmatch(rf"{seconds}{FOUND[job]} of {FOUND[job]} succeeded, client \d+ MB", printed[job])


def test_the_start_costs_computing_time(printed: dict[str, str]) -> None:
    start = re.fullmatch(r"[\d.]+ s, computing time ([\d.]+) s", printed[f"{CARDS} cards on {LANS} LANs"])
    assert start is not None
    assert float(start[1]) > 0


def test_memory_is_that_of_all_processes(printed: dict[str, str]) -> None:
    megabytes = {what: int(told.split()[0]) for what, told in printed.items() if re.fullmatch(r"\d+ MB", told)}
    total = megabytes.pop("memory of their processes (PSS)")
    assert sum(megabytes.values()) == total > 0
    assert "daemons" in megabytes


@pytest.mark.parametrize(("ok", "complaint", "status"), [("true", "", 0), ("false", "", 1), ("true", "echo lost >&2;", 1)])
def test_a_card_that_does_not_take_part_is_a_failure(tmp_path: Path, ok: str, complaint: str, status: int) -> None:
    client = tmp_path / "tarvelctl"
    client.write_text(f"""#!/bin/sh\n{complaint} cat >/dev/null; echo '{{"results": [{{"ok": {ok}}}]}}'\n""")
    client.chmod(0o755)
    done = bench("--cards", "1", "--lans", "1", "versions", TARVELD_BUILD=str(tmp_path))
    assert done.returncode == status, done.stderr
    assert f"{1 if ok == 'true' else 0} of 1 succeeded" in done.stdout
