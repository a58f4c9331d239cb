# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How large the daemon for the card is, where it has been built."""

import subprocess
from collections.abc import Iterator
from pathlib import Path

from paths import ROOT
from rows import Row

_TARGET = ROOT / "build/target"


def size_rows() -> Iterator[Row]:
    """Nothing without `scripts/target build powerpc-musl`, which takes its time and is a matter of its own."""
    program = _TARGET / "tarveld"
    if not program.exists():
        return
    # One library is for others, and has the daemon's objects once more.
    own = [library for library in (_TARGET / "src").rglob("*.a") if library.name != "libtimesettings.a"]
    yield Row("text on the card, own", value=sum(map(_text, own)), unit="bytes")
    yield Row("text on the card, static file", value=program.stat().st_size, unit="bytes")


def _text(file: Path) -> int:
    """Of a program, or of all objects in a library."""
    listing = subprocess.run(["size", str(file)], capture_output=True, text=True, check=True).stdout
    return sum(int(line.split()[0]) for line in listing.splitlines()[1:])
