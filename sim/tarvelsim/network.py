# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the card's network daemon has done: after a restart the devices get their addresses in its own time."""

import json
from pathlib import Path
from typing import Any

from .waiting import wait_for


class Network:
    def __init__(self, directory: Path) -> None:
        self._state = directory / "interfaces"

    def _read(self) -> dict[str, Any]:
        state: dict[str, Any] = json.loads(self._state.read_text())
        return state

    def mark(self) -> int:
        """How often the devices have been configured."""
        configured: int = self._read()["configured"]
        return configured

    def wait(self, since: int, timeout: float = 10) -> None:
        """Until they have been configured again after a mark. A lease, if there is to be one, is still on its way."""
        wait_for(lambda: self.mark() > since, timeout, lambda: "the card's network was not started again")

    def errors(self, section: str) -> list[str]:
        """What the network daemon holds against the settings of an interface."""
        errors: list[str] = self._read()["errors"][section]
        return errors
