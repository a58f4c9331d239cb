# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The protocol as the system tests write it down, and simulated cards, are at hand here, too."""

import os
import shlex
import sys
from pathlib import Path

_ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(_ROOT / "tests/system"), str(_ROOT / "sim"), str(_ROOT / "packaging/ansible")]

from support.daemon import COMMAND  # noqa: E402

# For tarvelsim, which looks for the card's other programs next to the daemon.
os.environ["TARVELD"] = shlex.join(COMMAND)
