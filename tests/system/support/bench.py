# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""scripts/card, as people use it."""

import os
import signal
import subprocess
from collections.abc import Iterator
from contextlib import contextmanager

from support.daemon import ROOT

PATIENCE = 300


class Bench:
    """The command, with LANs that nobody else sees: they are looked for in the folder of temporary files.

    Its name is to be short, since it is part of the names of the cards' sockets.
    """

    def __init__(self, folder: str) -> None:
        self._environment = {name: value for name, value in os.environ.items() if name != "TARVEL_LAN"}
        self._environment["TMPDIR"] = folder

    def _start(self, *words: str) -> subprocess.Popen[str]:
        command = [str(ROOT / "scripts/card"), *words]
        return subprocess.Popen(
            command, env=self._environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
        )

    def __call__(self, *words: str) -> tuple[int, str, str]:
        """Exit status, output and complaints."""
        with self._start(*words) as process:
            out, err = process.communicate(timeout=PATIENCE)
        return process.returncode, out, err

    @contextmanager
    def running(self, *words: str) -> Iterator[list[str]]:
        """Cards, until the end of the statement; gives what it prints before it waits."""
        with self._start("run", *words) as process:
            try:
                yield list(_until_it_waits(process))
            finally:
                process.send_signal(signal.SIGTERM)
                process.communicate(timeout=PATIENCE)


def _until_it_waits(process: subprocess.Popen[str]) -> Iterator[str]:
    assert process.stdout is not None
    for line in process.stdout:
        yield line
        if line.startswith("Try: "):
            return
    raise AssertionError(f"no card runs: {process.communicate(timeout=PATIENCE)[1]}")
