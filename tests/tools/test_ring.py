# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The ring of the simulated card's log, by itself."""

from pathlib import Path
from typing import NoReturn

import pytest
from ring import Ring


class Printed:
    """What the daemon and its children have printed, and the ring that takes it."""

    def __init__(self, folder: Path) -> None:
        self._console = folder / "console"
        self._published = folder / "ring"
        self.ring = Ring(self._published, self._console)

    def print(self, text: bytes) -> None:
        with self._console.open("ab") as console:
            console.write(text)

    def log(self) -> bytes:
        self.ring.publish()
        return self._published.read_bytes()


@pytest.fixture
def printed(tmp_path: Path) -> Printed:
    return Printed(tmp_path)


def test_what_was_printed_before_a_message_comes_before_it(printed: Printed) -> None:
    printed.print(b"first\n")
    printed.ring.add(b"second\n")
    printed.print(b"third\n")
    assert printed.log() == b"info tarveld: first\nsecond\ninfo tarveld: third\n"


def test_a_line_is_taken_when_its_end_is_there(printed: Printed) -> None:
    printed.print(b"whole\nha")
    assert printed.log() == b"info tarveld: whole\n"
    printed.print(b"lf\n")
    assert printed.log() == b"info tarveld: whole\ninfo tarveld: half\n"


def test_a_console_that_has_not_grown_is_not_opened(printed: Printed, monkeypatch: pytest.MonkeyPatch) -> None:
    def refuse(path: Path, *_: object, **__: object) -> NoReturn:
        raise AssertionError(f"{path.name} was opened")

    printed.print(b"printed\n")
    printed.ring.add(b"before\n")
    monkeypatch.setattr(Path, "open", refuse)
    printed.ring.add(b"after\n")
    monkeypatch.undo()
    assert printed.log() == b"info tarveld: printed\nbefore\nafter\n"


def test_a_card_on_which_nothing_was_ever_printed_has_a_log(printed: Printed) -> None:
    printed.ring.add(b"message\n")
    assert printed.log() == b"message\n"


def test_what_was_printed_before_a_boot_is_forgotten(printed: Printed) -> None:
    printed.print(b"before\n")
    printed.ring.clear()
    printed.print(b"after\n")
    assert printed.log() == b"info tarveld: after\n"


def test_the_oldest_lines_fall_out(printed: Printed) -> None:
    for number in range(3):
        printed.ring.add(b"%d" % number + b"x" * 30000 + b"\n")
    assert [line[:1] for line in printed.log().splitlines()] == [b"1", b"2"]
