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
        self._fence()
        self.since = card.log_mark()
        self._calls = card.calls_mark()
        self._commands = card.commands_mark()
        self._console = len(card.console())

    def _fence(self) -> str:
        """Returns when everything before is in the log; the level and text of the line that says so."""
        command = next_unknown_command()
        self._udp.send(request(command), to=BROADCAST)
        text = f"Unknown command ID: 0x{command:x}"
        self._card.wait_log(text)
        return f"warning {text}"

    def log(self) -> list[str]:
        """Every line so far as "level text"."""
        fence = self._fence()
        lines = [f"{line.level} {line.text}" for line in self._card.log_lines(self.since)]
        return lines[: lines.index(fence) - 1]  # the line before tells that the datagram came

    def log_without_numbers(self) -> list[str]:
        """Descriptors as "(N)"."""
        return [_NUMBER.sub("(N)", line) for line in self.log()]

    def logged(self, line: str) -> bool:
        return line in self.log()

    def commands(self) -> list[str]:
        """What the daemon gave to the shell."""
        return self._card.commands(self._commands)

    def calls(self, name: str | None = None) -> list[str]:
        """What was run, each as one line."""
        return [" ".join(call) for call in self._card.calls(name, self._calls)]

    def console(self) -> str:
        return self._card.console()[self._console :]
