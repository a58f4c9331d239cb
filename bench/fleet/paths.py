# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Where things are, and the search path to what other folders lend us."""

import os
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ.get("TARVELD_BUILD", ROOT / "build/release"))

sys.path.insert(0, str(ROOT / "sim"))
