# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The watch of these tests itself."""

from typing import Any, cast

from support.peers import UdpPeer
from support.watch import Watch
from tarvelsim import Card, LogLine, WaitTimeout
from wire import Header


class SlowCard:
    """Its records, too, and the client that asks it: each look at the log finds so many more of its lines."""

    def __init__(self, lines_at_each_look: list[int], lost: int = 0) -> None:
        self.records = self
        self._lost = lost
        self._looks = iter(lines_at_each_look)
        self._to_come: list[LogLine] = []
        self._lines: list[LogLine] = []

    def send(self, data: bytes, to: str) -> None:
        if self._lost > 0:
            self._lost -= 1
            return
        self.come("info", "a datagram came")
        self.come("warning", f"Unknown command ID: 0x{Header.decode(data).command:x}")

    def come(self, level: str, text: str) -> None:
        self._to_come.append(LogLine(level, "tarveld", 1, text))

    def wait_log(self, text: str, timeout: float) -> None:
        for _ in range(min(next(self._looks), len(self._to_come))):
            self._lines.append(self._to_come.pop(0))
        if text not in [line.text for line in self._lines]:
            raise WaitTimeout(text)

    def log_lines(self, since: int) -> list[LogLine]:
        return self._lines[since:]

    def log_mark(self) -> int:
        return len(self._lines)

    def calls_mark(self) -> int:
        return 0

    commands_mark = calls_mark

    def console(self) -> str:
        return ""


def watch(card: Any) -> Watch:
    return Watch(cast(Card, card), cast(UdpPeer, card))


def test_what_happened_is_told_without_the_questions_of_the_watch() -> None:
    card = SlowCard([2, 3])
    watching = watch(card)
    card.come("notice", "something happened")
    assert watching.log() == ["notice something happened"]


def test_question_that_was_asked_again_is_waited_for_to_its_end() -> None:
    card = SlowCard([2, 1, 2, 9])
    watching = watch(card)
    assert watching.log() == []


def test_question_that_was_lost_leaves_nothing_to_wait_for() -> None:
    card = SlowCard([0, 2, 2], lost=1)
    assert watch(card).log() == []
