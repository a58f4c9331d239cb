# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The system calls that the daemon makes for a job: each is a point at which something can go wrong."""

import re
from collections import Counter
from dataclasses import dataclass

from .jobs import Job
from .target import PATIENCE, TargetCard

_CALL = re.compile(r"(?P<name>[a-z_0-9]+)\((?P<arguments>.*)")
# They cannot fail, or tell of the end of the process.
_WITHOUT_FAILURE = {"exit_group", "exit", "rt_sigreturn", "restart_syscall", "getpid", "gettid", "execve"}


@dataclass(frozen=True)
class Point:
    job: Job
    call: str
    number: int  # among the calls of this name since the daemon was started
    line: str
    earlier: tuple[str, ...]  # the job's calls before this one

    def __str__(self) -> str:
        return f"{self.job.name}, {self.call} number {self.number}: {self.line[:120]}"


def points_of(target: TargetCard, job: Job) -> list[Point]:
    """In the order in which the calls were made, with the file or socket behind each descriptor."""
    target.restore()
    target.tracer.start("-e", "signal=none", "-yy")
    first = len(target.tracer.lines())
    target.play(job, patience=PATIENCE)
    counts: Counter[str] = Counter()
    points: list[Point] = []
    for index, line in enumerate(target.tracer.lines()):
        found = _CALL.match(line)
        if found is None:
            continue
        counts[found["name"]] += 1
        # One without a result is the wait for what comes after the job.
        is_made = " = " in line
        if index >= first and is_made and found["name"] not in _WITHOUT_FAILURE:
            earlier = tuple(point.line for point in points)
            points.append(Point(job, found["name"], counts[found["name"]], line, earlier))
    return points
