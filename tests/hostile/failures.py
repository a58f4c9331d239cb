# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Every call fails once: the daemon answers, logs or ends as designed, and what comes next is served."""

from collections.abc import Callable

from support.daemon import words
from support.peers import PATIENCE
from tarvelsim.errors import WaitTimeout
from tarvelsim.waiting import wait_for
from wire import Header, Status

from .points import Point
from .target import Lost, TargetCard

# The only ones whose failure ends the daemon, on purpose.
_ENDING = {"select", "pselect6", "_newselect", "accept", "accept4"}
_ON_THE_STREAM = {"recvfrom", "recv", "sendto", "send"}
_ERRORS = {
    "clone": ("EAGAIN", "Resource temporarily unavailable"),
    "clone3": ("EAGAIN", "Resource temporarily unavailable"),
    "vfork": ("EAGAIN", "Resource temporarily unavailable"),
    "mmap": ("ENOMEM", "Cannot allocate memory"),
    "brk": ("ENOMEM", "Cannot allocate memory"),
    "openat": ("EMFILE", "Too many open files"),
    "wait4": ("ECHILD", "No child processes"),
}
_USUAL = ("EIO", "Input/output error")
# What must be told of a failure, by the beginning of the call; the rest is nobody's business or has another way out.
_TOLD: tuple[tuple[str, str | None], ...] = (
    ("recvfrom(", "recv"),
    ("accept", "accept() failed: "),
    ("select(", "select() failed: "),
    ("pselect6(", "select() failed: "),
    ('openat(AT_FDCWD, "/var/timesettings.lock"', "open() FAILED: "),
    ('openat(AT_FDCWD, "/var/timesettings.replication"', "fopen() FAILED: "),
    ('openat(AT_FDCWD, "firmware.tar.gz"', "fopen() failed: "),
    ('openat(AT_FDCWD, "/etc/pnr/", ', None),  # a directory that cannot be listed has no entries
    ('openat(AT_FDCWD, "/etc/pnr/', "fopen() failed: "),
    ('openat(AT_FDCWD, "/tmp/', "fopen() failed: "),
    ('openat(AT_FDCWD, "/dev/mtd0ro"', "fopen() FAILED: "),
    ("flock(", "flock() FAILED: "),
)


def try_point(target: TargetCard, point: Point) -> list[str]:
    """What is wrong after the failure; nothing if all is as designed."""
    target.restore()
    error, text = _ERRORS.get(point.call, _USUAL)
    target.tracer.inject(f"{point.call}:error={error}:when={point.number}")
    log, console = target.card.records.log_mark(), len(target.card.records.console())
    try:
        result = target.play(point.job)
    except Lost as lost:
        return [str(lost)]
    complaints = [] if result.ended == (point.call in _ENDING) else [f"ended: {result.ended}"]
    # Behind a failed receive or send the stream is out of step, as nobody looks at what was not sent.
    if point.call not in _ON_THE_STREAM:
        complaints += [problem for reply in result.replies if (problem := _wrong_in(reply, point))]
    expected = next((told for call, told in _TOLD if point.line.startswith(call)), None)
    told = [] if expected is None else [expected, words(text)]
    told += ["tarvel-daemon terminated unexpectedly!"] if result.ended else []
    complaints += _missing(told, lambda: _said(target, log, console))
    if result.ended:
        target.start_plain()
    return complaints + target.complaints()


def _said(target: TargetCard, log: int, console: int) -> str:
    lines = (line.text for line in target.card.records.log_lines(log))
    return "\n".join(lines) + target.card.records.console()[console:]


def _missing(told: list[str], said: Callable[[], str]) -> list[str]:
    """What is not said, even a while later: a line of the log may come behind the answer to a later question."""
    try:
        wait_for(lambda: all(text in said() for text in told), PATIENCE, said)
    except WaitTimeout as never:
        return [f"{told} was not said, but: {never}"]
    return []


def _wrong_in(reply: bytes, point: Point) -> str | None:
    if len(reply) < 20:
        return f"a reply of {len(reply)} bytes"
    header = Header.decode(reply)
    if header.command != point.job.command | 0x8000:
        return f"a reply to {header.command:#x}"
    known = {Status.SUCCESS, Status.FAILURE, Status.WRONG_SERVICE, Status.UNKNOWN_COMMAND}
    return None if header.status in known else f"status {header.status}"
