# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How large the daemon for the card is, where it has been built."""

import subprocess
from collections.abc import Iterator
from pathlib import Path

from paths import ROOT
from rows import Row

_TARGET = ROOT / "build/target"
_OWN = "text on the card, own"
_WHOLE = "text on the card, static file"
# One is for others, and has the daemon's objects once more; three are for the hardened build.
_NOT_IN_IT = ("libtimesettings.a", "libtarveld_hardening.a", "libtarveld_archive_rules.a", "libtarveld_defences.a")


def size_rows() -> Iterator[Row]:
    """Without figures if it has not been, which takes its time and is a matter of its own."""
    program = _TARGET / "tarveld"
    if not program.exists():
        for job in (_OWN, _WHOLE):
            yield Row(job, unit="bytes", note="not built; `scripts/target build powerpc-musl` builds it")
        return
    own = [library for library in (_TARGET / "src").rglob("*.a") if library.name not in _NOT_IN_IT]
    yield Row(_OWN, value=sum(map(_text, own)), unit="bytes")
    yield Row(_WHOLE, value=program.stat().st_size, unit="bytes")


def _text(file: Path) -> int:
    """Of a program, or of all objects in a library."""
    listing = subprocess.run(["size", str(file)], capture_output=True, text=True, check=True).stdout
    return sum(int(line.split()[0]) for line in listing.splitlines()[1:])
