# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The client at work on a fleet: what it answers, how long it takes, how much memory it needs."""

import json
import os
import subprocess
import tempfile
import time
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import paths


_NAP = 0.005


@dataclass(frozen=True)
class Run:
    seconds: float
    megabytes: float  # resident at most
    results: list[dict[str, Any]]
    complaints: str

    @property
    def good(self) -> int:
        return sum(1 for result in self.results if result["ok"])

    @property
    def is_whole(self) -> bool:
        return self.good == len(self.results) > 0 and not self.complaints


class Client:
    """With a configuration and a state of its own."""

    def __init__(self, folder: Path) -> None:
        self._environment = {**os.environ, "HOME": str(folder)}
        for name in ("XDG_CONFIG_HOME", "XDG_STATE_HOME"):
            self._environment[name] = str(folder / name)
        self._state = folder / "XDG_STATE_HOME" / "tarvelctl"

    def remember(self, name: str, text: str) -> None:
        """As if an earlier run had written this."""
        self._state.mkdir(parents=True, exist_ok=True)
        (self._state / name).write_text(text, encoding="utf-8")

    def run(self, *words: str, targets: Sequence[str] = ()) -> Run:
        """The targets go to its standard input: a thousand would make a long command line."""
        command = [str(paths.BUILD / "tarvelctl"), "--quiet", "--yes", "-o", "json", *words, *(["-"] if targets else [])]
        with tempfile.TemporaryFile() as asked, tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as complaints:
            asked.write("\n".join(targets).encode())
            asked.seek(0)
            start = time.monotonic()
            process = subprocess.Popen(command, stdin=asked, stdout=out, stderr=complaints, env=self._environment)
            kilobytes = _watch(process)
            seconds = time.monotonic() - start
            out.seek(0)
            complaints.seek(0)
            told = complaints.read().decode(errors="replace")
            try:
                results: list[dict[str, Any]] = json.loads(out.read())["results"]
            except (ValueError, KeyError):
                raise SystemExit(f"tarvelctl {words[0]} ended with {process.returncode}: {told}") from None
        return Run(seconds, kilobytes / 1024, results, told)


def _watch(process: subprocess.Popen[bytes]) -> int:
    """Kilobytes that were resident at most; waits for the end, after which nobody can tell any more.

    What wait4() tells counts this process, too, as it was when it made the other.
    """
    peak = 0
    while process.poll() is None:
        status = Path(f"/proc/{process.pid}/status").read_text(encoding="ascii", errors="replace")
        peak = max([peak, *(int(line.split()[1]) for line in status.splitlines() if line.startswith("VmHWM:"))])
        time.sleep(_NAP)
    return peak
