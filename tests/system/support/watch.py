# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a card does from one moment on."""

import re

from tarvelsim import Card
from wire import request

from .peers import BROADCAST, UdpPeer, next_unknown_command

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
        self.since = card.log_mark()
        self.calls_mark = card.calls_mark()
        self.commands_mark = card.commands_mark()
        self._console = len(card.console())

    def _fence(self) -> None:
        """Returns when everything before is in the log."""
        command = next_unknown_command()
        self._udp.send(request(command), to=BROADCAST)
        text = f"Unknown command ID: 0x{command:x}"
        self._card.wait_log(text)
        self._fences.add(f"warning {text}")

    def log(self) -> list[str]:
        """Every line so far as "level text"."""
        self._fence()
        lines: list[str] = []
        for line in self._card.log_lines(self.since):
            lines.append(f"{line.level} {line.text}")
            if lines[-1] in self._fences:
                del lines[-2:]  # and the line before, which tells that the datagram came
        return lines

    def log_without_numbers(self) -> list[str]:
        """Descriptors as "(N)"."""
        return [_NUMBER.sub("(N)", line) for line in self.log()]

    def logged(self, line: str) -> bool:
        return line in self.log()

    def commands(self) -> list[str]:
        """What the daemon gave to the shell."""
        return self._card.commands(self.commands_mark)

    def calls(self, name: str | None = None) -> list[str]:
        """What was run, each as one line."""
        return [" ".join(call) for call in self._card.calls(name, self.calls_mark)]

    def console(self) -> str:
        return self._card.console()[self._console :]
