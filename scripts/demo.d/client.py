# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The operator's side: each operation is one run of tarvelctl, shown with its command line and its output."""

from collections.abc import Sequence
from pathlib import Path

from commands import run_shown

_ACCEPTED = 0
_REFUSED = 3


class Client:
    """Knows the card by its name, as an operator does."""

    def __init__(self, tarvelctl: str, card: str) -> None:
        self._tarvelctl = tarvelctl
        self._card = card

    def versions(self) -> None:
        self._run(["versions"])

    def time(self) -> None:
        self._run(["time", "get"])

    def set_ntp(self, server: str) -> None:
        self._run(["time", "set", "--ntp", server])

    def set_manual(self, date_time: str) -> None:
        """Expects to be refused."""
        self._run(["time", "set", "--manual", date_time], expected=_REFUSED)

    def ip(self) -> None:
        self._run(["ip", "get"])

    def set_ip(self, interface: str, address: str) -> None:
        self._run(["ip", "set", "--if", interface, "--static", address])

    def upgrade(self, archive: Path) -> None:
        self._run(["firmware", "upgrade", str(archive)])

    def reboot(self) -> None:
        self._run(["reboot", "--wait"])

    def _run(self, words: Sequence[str], expected: int = _ACCEPTED) -> None:
        run_shown([self._tarvelctl, *words, self._card], expected=expected)
