# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The operator's side: each operation is one run of tarvelctl, shown with its command line and its output."""

import shlex
import subprocess
from collections.abc import Sequence
from pathlib import Path

from narrator import show

_ACCEPTED = 0
_REFUSED = 3


class DemoError(Exception):
    """Something did not go as it should; the text says what."""


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
        command = ["tarvelctl", *words, self._card]
        show([f"$ {shlex.join(command)}"])
        done = subprocess.run(
            [self._tarvelctl, *words, self._card],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            check=False,
        )
        show(done.stdout.splitlines())
        if done.returncode != expected:
            raise DemoError(f"{shlex.join(command)} ended with {done.returncode} instead of {expected}")
