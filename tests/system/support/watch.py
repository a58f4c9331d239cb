# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a card does from one moment on."""

import contextlib
import re

from tarvelsim import Card, WaitTimeout
from tarvelsim.waiting import wait_for
from wire import request

from .daemon import bare, words
from .peers import BROADCAST, PATIENCE, UNTIL_ASKED_AGAIN, UdpPeer, next_unknown_command

_UNREACHABLE = f"sendto() failed: {words('Network is unreachable')}"
_NUMBER = re.compile(r"\(\d+\)")


class Watch:
    """Compares only what happened after it was made.

    The log is complete up to a question of the watch's own, to which the card's only reaction is a log line.
    """

    def __init__(self, card: Card, udp: UdpPeer) -> None:
        self._card = card
        self._udp = udp
        self._fences: set[str] = set()
        self._fence()
        self.since = card.records.log_mark()
        self.calls_mark = card.records.calls_mark()
        self.commands_mark = card.records.commands_mark()
        self._console = len(card.records.console())

    def _fence(self) -> None:
        """Returns when everything before is in the log. A network restart may eat a question, so another one follows; not
        the same, or the answer to the first would be taken for the end while the second is still on its way."""

        def is_logged() -> bool:
            command = next_unknown_command()
            text = f"Unknown command ID: 0x{command:x}"
            self._fences.add(f"warning {text}")
            self._udp.send(request(command), to=BROADCAST)
            with contextlib.suppress(WaitTimeout):
                self._card.records.wait_log(text, timeout=UNTIL_ASKED_AGAIN)
                return True
            return False

        wait_for(is_logged, PATIENCE, lambda: f"the card does not react; its console:\n{self._card.records.console()}")

    def log(self) -> list[str]:
        """Every line so far as "level text"."""
        self._fence()
        lines: list[str] = []
        is_fence = False
        for line in self._card.records.log_lines(self.since):
            lines.append(f"{line.level} {line.text}")
            if lines[-1] in self._fences:
                del lines[-2:]  # and the line before, which tells that the datagram came
                is_fence = True
            elif is_fence and line.text == _UNREACHABLE:
                del lines[-1]  # the answer to the fence, from a card that has no address yet
                is_fence = False
            else:
                is_fence = False
        return lines

    def log_without_numbers(self) -> list[str]:
        """Descriptors as "(N)"."""
        return [_NUMBER.sub("(N)", line) for line in self.log()]

    def logged(self, line: str) -> bool:
        return line in self.log()

    def commands(self) -> list[str]:
        """What the daemon gave to the shell."""
        return [bare(command) for command in self._card.records.commands(self.commands_mark)]

    def calls(self, name: str | None = None) -> list[str]:
        """What was run, each as one line."""
        return [" ".join(call) for call in self._card.records.calls(name, self.calls_mark)]

    def console(self) -> str:
        return self._card.records.console()[self._console :]
