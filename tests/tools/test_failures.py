# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The judge of single failures knows each call, and sees whatever else comes of a failure."""

import copy
from collections.abc import Callable
from types import SimpleNamespace
from typing import Any, cast

import pytest
from hostile import failures
from hostile.failures import Trial, compare, foresee
from hostile.jobs import JOBS, Job
from hostile.points import Point, calls_of
from hostile.table import ROWS, number_of, operation_of, row_of
from hostile.target import TargetCard
from model import Card, Refusal
from model.card import PART_NUMBERS
from model.time_reference import LOCK
from test_model_refusals import card as new_card
from twin.rig import MARKER, NTP_LINK

_ERROR = "Input/output error"


def _play(job: Job, operation: str) -> tuple[Card, Trial]:
    card = new_card()
    card.refusal = Refusal(operation, 1, _ERROR)
    return foresee(card, job)


def _upload() -> Trial:
    job = next(job for job in JOBS if job.name == "upload")
    return _play(job, "open firmware.tar.gz")[1]


def test_every_operation_of_the_table_is_one_of_the_model_and_the_other_way_round() -> None:
    asked: set[str] = set()
    for job in JOBS:
        for operation in ("nothing", "read /tmp/uci.tmp"):
            asked |= set(_play(job, operation)[0].asked)
    shown = {operation for operation in asked if not operation.startswith(("open /", "read /", "close /", "stat /"))}
    # Where the command has many paths the table has a pattern.
    assert shown == {row.operation for row in ROWS if row.operation and "\\" not in row.operation}


@pytest.mark.parametrize(
    ("line", "operation"),
    [
        ('openat(AT_FDCWD</tmp/upgrade>, "/etc/pnr/kernel", O_RDONLY) = 8', "open /etc/pnr/kernel"),
        ("read(8</dev/mtd0ro>, ...", "read /dev/mtd0ro"),
        ("close(9</tmp/uci.tmp>) = 0", "close /tmp/uci.tmp"),
        ('newfstatat(AT_FDCWD</tmp/upgrade>, "/etc/pnr/kernel", {', "stat /etc/pnr/kernel"),
        ("mmap(NULL, 36864, PROT_READ|PROT_WRITE, MAP_PRIVATE|MAP_ANONYMOUS|MAP_STACK, -1, 0) = 0x7f", "run"),
    ],
)
def test_call_is_known_by_its_beginning(line: str, operation: str) -> None:
    row = row_of(line)
    assert row is not None and operation_of(row, line) == operation


def test_operations_are_counted_by_their_kind_and_file() -> None:
    lines = [f"close(9</tmp/{name}>) = 0" for name in ("uci.tmp", "drav_pnr_assy", "uci.tmp")]
    row = row_of(lines[0])
    assert row is not None and [number_of(row, lines[0], lines[:end]) for end in range(4)] == [1, 2, 2, 3]


def test_calls_of_a_job_begin_with_what_arrives_and_are_counted_since_the_start() -> None:
    trace = [
        'recvfrom(4<TCP:[0.0.0.0:0]>, "", 20, 0, NULL, NULL) = -1 ENOTCONN',
        "accept4(5<TCP:[0.0.0.0:50003]>, NULL, NULL, 0) = 4",
        "exit_group(1) = ?",
        'recvfrom(4<TCP:[10.0.0.11:50003->10.0.0.1:40000]>, "", 20, 0, NULL, NULL) = 0',
    ]
    points = calls_of(JOBS[0], trace)
    assert [(point.call, point.number, point.earlier) for point in points] == [
        ("accept4", 1, ()),
        ("recvfrom", 2, (trace[1],)),
    ]


def test_call_that_no_row_knows_is_wrong() -> None:
    point = Point(JOBS[0], "newcall", 1, "newcall(7, 8) = 0", ())
    told = failures.try_point(cast(TargetCard, None), point)
    assert told == ["no row of the table knows this call"]


def _without_reply(trial: Trial) -> None:
    trial.outcome.replies.clear()


def _with_another_status(trial: Trial) -> None:
    (to, data), *_ = trial.outcome.replies
    trial.outcome.replies[0] = (to, data.replace(b"\x80\x02", b"\x80\x01"))


def _without_a_line(trial: Trial) -> None:
    trial.outcome.log.remove(f"warning fopen() failed: {_ERROR}")


def _with_a_line_more(trial: Trial) -> None:
    trial.outcome.log.append("info a line more")


def _with_a_command_more(trial: Trial) -> None:
    trial.outcome.commands.append("reboot")


def _with_a_word_more(trial: Trial) -> None:
    trial.console.append("fclose() FAILED: Success")


def _ended(trial: Trial) -> None:
    trial.ended = True


@pytest.mark.parametrize(
    "plant",
    [
        _without_reply,
        _with_another_status,
        _without_a_line,
        _with_a_line_more,
        _with_a_command_more,
        _with_a_word_more,
        _ended,
    ],
)
def test_planted_difference_is_seen(plant: Callable[[Trial], None]) -> None:
    expected = _upload()
    seen = copy.deepcopy(expected)
    assert not compare(copy.deepcopy(expected), copy.deepcopy(seen))
    plant(seen)
    assert compare(expected, seen)


class _Rig:
    """A card that is in the state of a model."""

    def __init__(self, card: Card) -> None:
        self._card = card
        self.inside = SimpleNamespace(exists=self._exists)
        self.card = SimpleNamespace(inside=self.inside)
        self.rig = self

    def _exists(self, path: str) -> bool:
        links = {MARKER: self._card.replication_pending, NTP_LINK: self._card.ntp_enabled}
        return links.get(path, path in self._card.files)

    def settings(self) -> dict[str, Any]:
        return self._card.settings.view()

    def staged(self) -> list[str]:
        return list(self._card.settings.staged)

    def part_numbers(self) -> dict[str, bytes]:
        return {path: data for path, data in self._card.files.items() if path.startswith(PART_NUMBERS)}

    def upgrade_tree(self) -> dict[str, bytes]:
        return self._card.upgrade_tree


PLANTED_FILES: dict[str, Callable[[Card], object]] = {
    "setting": lambda card: card.settings.committed.update({"network.lanvemt2eth1.proto": "none"}),
    "staged": lambda card: card.settings.staged.update({"system.ntp.server": "10.0.0.1"}),
    "part number": lambda card: card.files.update({PART_NUMBERS + "kernel": b"e\n"}),
    "archive": lambda card: card.upgrade_tree.update({"firmware.tar.gz": b""}),
    "link": lambda card: setattr(card, "ntp_enabled", False),
    "marker": lambda card: setattr(card, "replication_pending", True),
    "lock": lambda card: card.files.update({LOCK: b""}),
}


@pytest.mark.parametrize("name", PLANTED_FILES)
def test_planted_file_or_setting_is_seen(name: str) -> None:
    card = new_card()
    rig = cast(Any, _Rig(copy.deepcopy(card)))
    assert not failures.left_behind(card, rig)
    PLANTED_FILES[name](rig._card)
    assert failures.left_behind(card, rig)
