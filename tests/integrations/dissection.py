# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A capture as tshark tells it with our dissector."""

import subprocess
from dataclasses import dataclass
from pathlib import Path

from programs import ProgramError, program
from support.daemon import COMMAND

DISSECTOR = Path(COMMAND[-1]).parent / "tarvel.lua"  # made beside the daemon
_SEPARATOR = "|"


@dataclass(frozen=True)
class Dissection:
    """tshark ends with 0 when a script is missing or fails, so its words count."""

    capture: Path

    def fields(self, *names: str, display: str = "tarvel") -> list[tuple[str, ...]]:
        """A row for each packet that the filter lets pass; the values of several messages in one are parted by commas."""
        options = [option for name in names for option in ("-e", name)]
        output = self._tshark("-Y", display, "-T", "fields", f"-Eseparator={_SEPARATOR}", *options)
        return [tuple(line.split(_SEPARATOR)) for line in output.splitlines()]

    def lines(self, *columns: str, display: str = "tarvel") -> list[str]:
        """As a person reads them, a line for each packet."""
        shown = ",".join(f'"{column}","{column}"' for column in columns)
        output = self._tshark("-Y", display, "-o", f"gui.column.format:{shown}")
        return [line.rstrip() for line in output.splitlines()]

    def details(self) -> str:
        """Everything, as a tree."""
        return self._tshark("-O", "tarvel,xml", "-V")

    def complaints(self) -> list[str]:
        """The expert items of our protocol."""
        rows = self.fields("_ws.expert.message", display="tarvel && _ws.expert")
        return [message for (row,) in rows for message in row.split(",") if not message.startswith("Connection")]

    def _tshark(self, *options: str) -> str:
        command = [program("tshark"), "-2", "-r", str(self.capture), "-X", f"lua_script:{DISSECTOR}", *options]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        if done.returncode != 0 or "Lua" in done.stdout + done.stderr:
            raise ProgramError(f"{command} ended with {done.returncode}: {done.stdout}{done.stderr}")
        return done.stdout
