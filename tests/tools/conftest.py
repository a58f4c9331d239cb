# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

import sys
from pathlib import Path

_ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [
    str(_ROOT / folder) for folder in ("tools", "tools/target", "tests", "tests/system", "sim", "sim/card")
]
