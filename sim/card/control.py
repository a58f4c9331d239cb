# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The socket on which the card takes orders: from the LAN side and from its own reboot program.

One connection carries one order and one answer, each a line of JSON.
"""

import json
import socket
from collections.abc import Callable
from pathlib import Path
from typing import Any

Order = dict[str, Any]


class Control:
    def __init__(self, path: Path) -> None:
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.socket.bind(str(path))
        self.socket.listen(16)

    def serve_one(self, execute: Callable[[Order], Order]) -> None:
        """Takes one order; what goes wrong while it is executed is the answer."""
        connection, _ = self.socket.accept()
        with connection, connection.makefile("rw") as stream:
            line = stream.readline()
            if not line:
                return
            try:
                answer = execute(json.loads(line))
            except (OSError, ValueError, KeyError) as error:
                answer = {"error": f"{type(error).__name__}: {error}"}
            stream.write(json.dumps(answer) + "\n")
