# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Every call fails once: the card must answer, log, run and leave behind exactly what the model foresees of it."""

import re
from dataclasses import dataclass
from difflib import unified_diff

from model import Card, Refusal, UdpPort
from model.stream import LastWords
from model.time_reference import LOCK
from support.peers import PATIENCE
from tarvelsim.errors import WaitTimeout
from tarvelsim.records import LogLine
from tarvelsim.waiting import wait_for
from twin import comparison
from twin.actions import Outcome
from twin.rig import TCP
from wire import request

from .jobs import DEVICE, Job
from .points import Point
from .table import Row, number_of, operation_of, row_of
from .target import Lost, Result, TargetCard

_ERRORS = {
    "clone": ("EAGAIN", "Resource temporarily unavailable"),
    "clone3": ("EAGAIN", "Resource temporarily unavailable"),
    "vfork": ("EAGAIN", "Resource temporarily unavailable"),
    "mmap": ("ENOMEM", "Cannot allocate memory"),
    "openat": ("EMFILE", "Too many open files"),
    "wait4": ("ECHILD", "No child processes"),
}
_USUAL = ("EIO", "Input/output error")
# Among the words of the programs that the daemon runs.
_TOLD = re.compile(r"(Extracting files|system\(\)|fopen\(\)|fgets\(\)|fread\(\)|fclose\(\)|End of file|Bootloader).*")
# The later question is asked as often as it needs to be answered.
_LATER = re.compile(r"info Got datagram of 20 bytes from .*|warning Unknown command ID: 0x[67]...")
_CHANGING = (re.compile(r"\(\d+\)"), "(N)"), (re.compile(r"(port|50003/)( ?)\d+"), r"\1\2N")
_DATE = re.compile(rb'DateTime="[^"]*"')  # of a reply that may have lost its header
_A_QUESTION = 0x6000
_PORTS = {TCP: ("", 0), DEVICE: ("", 0)}  # of clients; they are masked
# Microseconds for what nobody waits for; where this makes a difference, more.
_DELAYS = (100_000, 2_000_000, 10_000_000)


@dataclass
class Trial:
    """What is to be seen of a failure, or what was."""

    outcome: Outcome
    console: list[str]
    ended: bool


def try_point(target: TargetCard, point: Point) -> list[str]:
    """What is wrong after the failure; nothing if all is as designed."""
    row = row_of(point.line)
    if row is None:
        return ["no row of the table knows this call"]
    complaints: list[str] = []
    for delay in _DELAYS if row.lingers else (0,):
        complaints = _try(target, point, row, delay)
        if not complaints:
            break
    return complaints


def _try(target: TargetCard, point: Point, row: Row, delay: int) -> list[str]:
    error, text = _ERRORS.get(point.call, _USUAL)
    card = target.model.copy()
    card.refusal = _refusal(point, row, text)
    card, expected = foresee(card, point.job)
    target.restore()
    entry = f":delay_enter={delay}" if delay else ""
    target.tracer.inject(f"{point.call}:error={error}{entry}:when={point.number}")
    try:
        seen = _play(target, point, expected.outcome.last_words)
    except (Lost, WaitTimeout) as lost:
        target.start_plain()
        return [str(lost)]
    complaints = compare(expected, seen, in_any_order=row.lingers) + left_behind(card, target)
    if seen.ended:
        target.start_plain()
    return complaints + target.complaints()


def _refusal(point: Point, row: Row, text: str) -> Refusal | None:
    operation = operation_of(row, point.line)
    return None if operation is None else Refusal(operation, number_of(row, point.line, point.earlier), text)


def foresee(card: Card, job: Job) -> tuple[Card, Trial]:
    """The card as it will be behind the job and a later question."""
    future, outcome = comparison.foresee(card, job.action, _PORTS)
    if not future.has_ended:
        UdpPort(future, *_PORTS[DEVICE]).receive(request(_A_QUESTION))
    return future, Trial(outcome, future.console, future.has_ended)


def _play(target: TargetCard, point: Point, last_words: LastWords | None) -> Trial:
    records = target.card.records
    log, commands, console = records.log_mark(), records.commands_mark(), len(records.console())
    result = target.play(point.job, last_words)
    lines = _log_up_to_the_end(target, result, log)
    told = [line for line in records.console()[console:].splitlines() if _TOLD.fullmatch(line)]
    return Trial(Outcome(result.replies, lines, records.commands(commands)), told, result.ended)


def _log_up_to_the_end(target: TargetCard, result: Result, since: int) -> list[str]:
    def look() -> list[LogLine] | None:
        lines = target.card.records.log_lines(since)
        return lines if any(line.text == result.last_line for line in lines) else None

    def missing() -> str:
        return f"{result.last_line} was not said; {target.card.records.log_tail()}"

    return [f"{line.level} {line.text}" for line in wait_for(look, PATIENCE, missing)]


def compare(expected: Trial, seen: Trial, in_any_order: bool = False) -> list[str]:
    for trial in (expected, seen):
        trial.outcome.replies = [(to, _DATE.sub(b"", data)) for to, data in trial.outcome.replies]
        trial.outcome.log = [_masked(line) for line in trial.outcome.log if not _LATER.fullmatch(line)]
        if in_any_order:
            trial.outcome.commands.sort()
    found = comparison.differences(expected.outcome, seen.outcome)
    found += unified_diff(expected.console, seen.console, "console of the model", "console of the card", lineterm="")
    if expected.ended != seen.ended:
        found.append(f"ended: {seen.ended}")
    return found


def _masked(line: str) -> str:
    line = re.sub(r"from \S* ", "from * ", line)
    for pattern, replacement in _CHANGING:
        line = pattern.sub(replacement, line)
    return line


def left_behind(card: Card, target: TargetCard) -> list[str]:
    found = comparison.state_differences(card, target.rig)
    pairs = [
        ("staged", sorted(card.settings.staged), sorted(target.staged())),
        ("the lock", LOCK in card.files, target.card.inside.exists(LOCK)),
    ]
    found += [f"{what}: {ours} in the model, {theirs} on the card" for what, ours, theirs in pairs if ours != theirs]
    return found
