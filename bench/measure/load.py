# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs the programs of bench/load."""

import subprocess
from collections.abc import Sequence

import cores
from paths import program
from samples import Samples, parse

_PATIENCE = 600  # seconds


def run(command: Sequence[str], sides: int, turn: int = 1) -> list[Samples]:
    done = subprocess.run(command, capture_output=True, text=True, timeout=_PATIENCE, check=False)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(command)[:200]}: {done.stderr.strip() or done.returncode}")
    return parse(done.stdout, sides, turn)


def ask(
    job: str,
    request: bytes,
    addresses: Sequence[str],
    *,
    rounds: int,
    turn: int = 1,
    size: int = 0,
    core: int = cores.WORK,
) -> list[Samples]:
    """Asks the servers in turn; `size` is that of an upload or of a burst."""
    words = [program("bench_ask"), job, str(rounds), str(turn), str(size), request.hex(), *addresses]
    return run(cores.pinned(core, words), len(addresses), turn)


def run_in_turn(commands: Sequence[Sequence[str]], rounds: int, core: int | None = None) -> list[Samples]:
    words = [program("bench_run"), str(rounds)]
    for number, command in enumerate(commands):
        words += [*(["--"] if number else []), *command]
    return run(words if core is None else cores.pinned(core, words), len(commands))
