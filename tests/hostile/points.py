# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The system calls that the daemon makes for a job: each is a point at which something can go wrong."""

import re
from collections import Counter
from dataclasses import dataclass

from tarvelsim.waiting import wait_for

from .jobs import Job
from .target import PATIENCE, TargetCard

_ACCEPTED = re.compile(r"accept4?\(")
_RECEIVED = re.compile(r"recvfrom\(\d+<UDP")
_ANSWERED = re.compile(r"sendto\(\d+<UDP")
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
    target.play(job, patience=PATIENCE)
    return calls_of(job, _trace(target))


def calls_of(job: Job, trace: list[str]) -> list[Point]:
    counts: Counter[str] = Counter()
    points: list[Point] = []
    arrival = _ACCEPTED if job.over_tcp else _RECEIVED
    first = next(index for index, line in enumerate(trace) if arrival.match(line))
    for index, line in enumerate(trace):
        found = _CALL.match(line)
        if found is None:
            continue
        counts[found["name"]] += 1
        if index >= first and found["name"] not in _WITHOUT_FAILURE:
            earlier = tuple(point.line for point in points)
            points.append(Point(job, found["name"], counts[found["name"]], line, earlier))
    return points


def _trace(target: TargetCard) -> list[str]:
    """Up to the answer to the later question: strace writes a call down when it has returned, which may be a while after
    the answer has come. Behind it is only the wait for what comes after the job.
    """

    def look() -> list[str] | None:
        lines = [line for line in target.tracer.lines() if " = " in line]
        return lines if _ANSWERED.match(lines[-1]) else None

    return wait_for(look, PATIENCE, lambda: f"the answer is not in the trace: {target.tracer.lines()[-3:]}")
