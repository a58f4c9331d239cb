# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Programs of other makers, and what goes wrong with them. The tour of a fleet (`scripts/demo.d/fleet`) uses them, too."""

import shutil


class ProgramError(Exception):
    """A program is missing, ended unasked, or did not do what it was asked to; the text says which and why."""


def program(name: str) -> str:
    found = shutil.which(name)
    if found is None:
        raise ProgramError(f"there is no {name}; `scripts/test fleet` installs or unpacks it")
    return found
