# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""scripts/bench --fleet: many simulated cards on several LANs, and how long the client takes with all of them."""

import argparse
import os
import sys
import tempfile
import time
from pathlib import Path

import paths  # noqa: F401
from client import Client, Run
from jobs import JOBS, Fleet
from memory import available, computing_time, shares
from tarvelsim import Lan, SimError, fleet, namespaces
from tarvelsim.launch import run_in_lan
from tarvelsim.plan import Plan


def _tell(what: str, text: str) -> None:
    print(f"{what + ':':34} {text}", flush=True)


def _start(lan: Lan, count: int) -> Fleet:
    before = available()
    start = time.monotonic()
    cards = fleet.cards(lan, [f"card{number}" for number in range(1, count + 1)])
    for _ in fleet.start(cards):
        pass
    seconds = time.monotonic() - start
    _tell(f"{count} cards on {lan.plan.lans} LANs", f"{seconds:.1f} s, computing time {computing_time():.1f} s")
    memory = shares()
    _tell("memory of their processes (PSS)", f"{sum(memory.values())} MB")
    for kind, megabytes in memory.most_common():
        _tell(f"  {kind}", f"{megabytes} MB")
    _tell("memory that the machine has less", f"{before - available()} MB, the kernel's own included")
    return Fleet(lan, cards)


def _measure(names: list[str], cards: Fleet) -> bool:
    """Whether all cards took part in all of it; how long that took is not judged."""
    is_whole = True
    with tempfile.TemporaryDirectory() as folder:
        client = Client(Path(folder))
        for name in names:
            what, measure = JOBS[name]
            run: Run = measure(client, cards, Path(folder))
            good = f"{run.seconds:.1f} s, {run.good} of {len(run.results)} succeeded"
            _tell(what, f"{good}, client {run.megabytes:.0f} MB")
            for line in run.complaints.splitlines()[:3]:
                _tell("", line)
            is_whole = is_whole and run.is_whole
    return is_whole


def _parsed() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/bench --fleet", description=__doc__)
    parser.add_argument("--cards", type=int, default=1000, metavar="N", help="how many (1000)")
    parser.add_argument("--lans", type=int, default=4, metavar="N", help="on how many LANs (4)")
    known = " ".join(JOBS)
    parser.add_argument("jobs", nargs="*", default=[], metavar="JOB", help=f"only these, behind the start: {known}")
    arguments = parser.parse_args()
    for job in arguments.jobs:
        if job not in JOBS and job != "start":
            parser.error(f'there is no job "{job}"; jobs are: start {known}')
    return arguments


def main() -> int:
    arguments = _parsed()
    # Once more, but inside of the LAN: all cards end with it.
    if "TARVEL_LAN" not in os.environ:
        return run_in_lan([namespaces.PYTHON, *sys.argv], Plan.for_fleet(arguments.cards, arguments.lans))
    cards = _start(Lan.current(), arguments.cards)
    return 0 if _measure([job for job in arguments.jobs or JOBS if job != "start"], cards) else 1


if __name__ == "__main__":
    try:
        sys.exit(main())
    except SimError as error:
        sys.exit(f"scripts/bench: {error}")
