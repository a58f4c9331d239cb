# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The table says what was not measured, and why."""

from contextlib import nullcontext
from pathlib import Path
from typing import cast

import jobs_udp
import messages
import pytest
import sizes
from effort import FULL
from jobs_upload import growth_row
from rows import Row, table
from tarvelsim import Card


def test_a_note_stands_below_the_table() -> None:
    lines = table([Row("private memory", value=408, unit="kB"), Row("upload", note="no room")])
    assert [line.split() for line in lines[1:]] == [
        ["private", "memory", "408", "kB", "<=", "440", "yes"],
        ["upload", "-"],
        [],
        ["upload:", "no", "room"],
    ]


def test_without_notes_nothing_is_below_the_table() -> None:
    assert len(table([Row("private memory", value=408, unit="kB")])) == 2


def test_a_note_is_among_the_figures() -> None:
    figures = Row("text on the card, own", unit="bytes", note="not built").to_json()
    assert (figures["value"], figures["met"], figures["note"]) == (None, None, "not built")
    assert "note" not in Row("private memory", value=408, unit="kB").to_json()


def test_a_card_that_was_not_built_is_told(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(sizes, "_TARGET", tmp_path)
    rows = list(sizes.size_rows())
    assert [(row.job, row.value) for row in rows] == [
        ("text on the card, own", None),
        ("text on the card, static file", None),
    ]
    assert all("scripts/target build powerpc-musl" in row.note for row in rows)


def test_the_memory_of_uploads_is_compared_from_the_smallest_to_the_largest() -> None:
    row = growth_row([3000, 3008, 3004], [])
    assert (row.value, row.note) == (4, "")


def test_an_upload_without_room_is_told() -> None:
    row = growth_row([3000, 3004], [1 << 30])
    assert (row.value, row.note) == (4, "without 1024 MiB, for which /tmp has no room")


def test_a_single_upload_tells_nothing_of_growth() -> None:
    row = growth_row([3000], [64 << 20, 256 << 20])
    assert (row.value, row.note) == (None, "without 64 MiB and 256 MiB, for which /tmp has no room")


def test_ip_configurations_are_asked_for_500_times_in_a_full_run(monkeypatch: pytest.MonkeyPatch) -> None:
    rounds: dict[bytes, int] = {}

    def timed(_started: object, _kind: str, request: bytes, **options: int) -> tuple[dict[str, None], dict[str, float]]:
        rounds[request] = options["rounds"]
        return {"daemon": None}, {}

    monkeypatch.setattr(jobs_udp, "servers", lambda card, sides: nullcontext([]))
    monkeypatch.setattr(jobs_udp, "timed", timed)
    assert list(jobs_udp.udp_rows(cast(Card, None), FULL)) == []
    assert rounds[messages.IP_GET] >= 500
