# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Where things are, and the search path to what other folders lend us: how programs of other makers are run, the tests
of what we bring for them know already."""

import os
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
BUILD = ROOT / "build"

os.environ.setdefault("TARVELD", str(BUILD / "release/tarveld"))
sys.path[1:1] = [str(ROOT / folder) for folder in ("scripts/demo.d", "sim", "tests/integrations", "tests/system")]
