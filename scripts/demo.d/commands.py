# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Programs as they are run on a tour: shown with their command line and their output, and held to their exit status."""

import shlex
import subprocess
from collections.abc import Mapping, Sequence
from pathlib import Path

from narrator import show


class DemoError(Exception):
    """Something did not go as it should; the text says what."""


def check(true: bool, otherwise: str) -> None:
    if not true:
        raise DemoError(otherwise)


def run_shown(
    command: Sequence[str],
    *,
    expected: int = 0,
    environment: Mapping[str, str] | None = None,
    folder: Path | None = None,
    most: int | None = None,  # lines that are shown
) -> str:
    """All that the program printed. A person types its name and no path, and so it is shown."""
    typed = shlex.join([Path(command[0]).name, *command[1:]])
    show([f"$ {typed}"])
    done = subprocess.run(
        command,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        env=environment,
        cwd=folder,
        check=False,
    )
    show(done.stdout.splitlines(), most if done.returncode == expected else None)
    check(done.returncode == expected, f"{typed} ended with {done.returncode} instead of {expected}")
    return done.stdout
