# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The system calls that the daemon makes for a job: each is a point at which something can go wrong."""

import re
from collections import Counter
from dataclasses import dataclass

from .jobs import Job
from .target import LIMIT, TargetCard

_CALL = re.compile(r"(?P<name>[a-z_0-9]+)\((?P<arguments>.*)")
# They cannot fail, or tell of the end of the process.
_WITHOUT_FAILURE = {"exit_group", "exit", "rt_sigreturn", "restart_syscall", "getpid", "gettid", "execve"}


@dataclass(frozen=True)
class Point:
    job: Job
    call: str
    number: int  # among the calls of this name since the daemon was started
    line: str

    def __str__(self) -> str:
        return f"{self.job.name}, {self.call} number {self.number}: {self.line}"


def points_of(target: TargetCard, job: Job) -> list[Point]:
    """In the order in which the calls were made."""
    target.restore()
    target.tracer.start("-e", "signal=none")
    first = len(target.tracer.lines())
    target.play(job, asked_again=LIMIT)  # on a slow machine it would make calls that are not made the next time
    counts: Counter[str] = Counter()
    points = []
    for index, line in enumerate(target.tracer.lines()):
        found = _CALL.match(line)
        if found is None:
            continue
        counts[found["name"]] += 1
        # One without a result is the wait for what comes after the job.
        is_made = " = " in line
        if index >= first and is_made and found["name"] not in _WITHOUT_FAILURE:
            points.append(Point(job, found["name"], counts[found["name"]], line[:100]))
    return points
