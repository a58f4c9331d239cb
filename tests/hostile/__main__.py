# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""sim/lan /usr/bin/python3 tests/hostile failures|kills|wire|soak [OPTION...]

  failures  lets every system call of every kind of request fail once
  kills     kills the daemon at every system call of every kind of change
  wire      crumbs, cuts, clients that never read, floods and bombs
  soak      mixed requests, and what the daemon holds meanwhile, as a curve

With --points N only so many calls are tried, chosen by --seed S; with --job NAME only those for that job; --scale X
makes wire and soak shorter, --plot FILE draws the curve. Prints whatever is wrong afterwards and, as the last line of
each programme, what was tried. Ends with 1 if anything was wrong.
"""

import argparse
import os
import shlex
import sys
from collections.abc import Callable
from pathlib import Path
from random import Random

_ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(_ROOT / "tests"), str(_ROOT / "tests/system"), str(_ROOT / "sim")]

import tarvelsim  # noqa: E402
from hostile import failures, kills, soak  # noqa: E402
from hostile.health import Health  # noqa: E402
from hostile.jobs import CHANGES, JOBS, Job  # noqa: E402
from hostile.points import Point, points_of  # noqa: E402
from hostile.target import HOST, TargetCard  # noqa: E402
from hostile.wire import Wire  # noqa: E402
from support.daemon import COMMAND  # noqa: E402

_MOST_ROUNDS = 5
_Try = Callable[[TargetCard, Point], list[str]]


def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programme", choices=sorted(_PROGRAMMES))
    parser.add_argument("--points", type=int, help="only so many, chosen at random")
    parser.add_argument("--seed", type=int, default=1, help="for the choice (1)")
    parser.add_argument("--job", choices=[job.name for job in JOBS], help="only the calls that are made for it")
    parser.add_argument("--scale", type=float, default=1, help="of the long form (1)")
    parser.add_argument("--plot", type=Path, help="where the curve of a soak is drawn")
    return parser.parse_args()


def _failures(target: TargetCard, arguments: argparse.Namespace) -> int:
    return _try_points(target, arguments, failures.try_point, JOBS)


def _kills(target: TargetCard, arguments: argparse.Namespace) -> int:
    return _try_points(target, arguments, kills.try_point, CHANGES)


def _try_points(target: TargetCard, arguments: argparse.Namespace, try_point: _Try, jobs: tuple[Job, ...]) -> int:
    jobs = tuple(job for job in jobs if arguments.job in (None, job.name))
    points = [point for job in jobs for point in points_of(target, job)]
    known = len(points)
    if arguments.points is not None and arguments.points < known:
        points = Random(arguments.seed).sample(points, arguments.points)
    bad = 0
    for point in points:
        complaints = try_point(target, point)
        if complaints:
            bad += 1
            print(f"WRONG after {point}", *complaints, sep="\n    ", flush=True)
    good = len(points) - bad
    print(f"{arguments.programme}: {good} of {len(points)} points as designed, of {known} in {len(jobs)} jobs")
    return bad or not points


def _wire(target: TargetCard, arguments: argparse.Namespace) -> int:
    wire = Wire(target.card, target.patient_client(), arguments.scale)
    bad = 0
    told = []
    for name, attack in wire.attacks().items():
        count, complaints = _attack(target, attack)
        told.append(f"{count} {name}")
        if complaints:
            bad += 1
            print(f"WRONG after {told[-1]}", *complaints, sep="\n    ", flush=True)
    print(f"wire: {', '.join(told)}; {len(told) - bad} of {len(told)} survived unchanged")
    return bad


def _attack(target: TargetCard, attack: Callable[[], int]) -> tuple[int, list[str]]:
    """Until it leaves the daemon as it was: what is taken once and kept is no leak, and a leak leaks every time."""
    count, complaints = 0, target.complaints()
    for _ in range(_MOST_ROUNDS):
        before = Health.of(target.card)
        count += attack()
        complaints = target.complaints() + before.complaints(Health.of(target.card))
        if not complaints:
            break
    return count, complaints


def _soak(target: TargetCard, arguments: argparse.Namespace) -> int:
    return soak.run(target.card, target.patient_client(), arguments.scale, arguments.plot)


_PROGRAMMES: dict[str, Callable[[TargetCard, argparse.Namespace], int]] = {
    "failures": _failures,
    "kills": _kills,
    "wire": _wire,
    "soak": _soak,
}


def main() -> int:
    arguments = _arguments()
    os.environ["TARVELD"] = shlex.join(COMMAND)
    lan = tarvelsim.Lan.current()
    with lan.card(HOST, command=COMMAND) as card:
        return 1 if _PROGRAMMES[arguments.programme](TargetCard(lan, card, COMMAND), arguments) else 0


if __name__ == "__main__":
    sys.exit(main())
