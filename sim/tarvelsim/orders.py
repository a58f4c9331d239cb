# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a card's init is told to do, over its socket."""

import json
import socket
from pathlib import Path
from typing import Any

from .errors import SimError


class Orders:
    def __init__(self, name: str, directory: Path) -> None:
        self._name = name
        self._socket = directory / "control.socket"

    def give(self, what: str, **details: Any) -> dict[str, Any]:
        """Has the init do something and returns its answer."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as init:
            init.connect(str(self._socket))
            with init.makefile("rw") as stream:
                stream.write(json.dumps({"do": what, **details}) + "\n")
                stream.flush()
                answer: dict[str, Any] = json.loads(stream.readline() or '{"error": "no answer"}')
        if "error" in answer:
            raise SimError(f"{self._name}: {what}: {answer['error']}")
        return answer
