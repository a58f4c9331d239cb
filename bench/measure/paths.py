# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Where things are, and the search path to what other folders lend us."""

import os
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("TARVELD_BUILD", ROOT / "build/release"))

for lender in ("sim", "tests/system"):
    sys.path.insert(0, str(ROOT / lender))


def program(name: str) -> str:
    return str(BUILD / name)
