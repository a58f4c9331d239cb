# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Where the parts of the simulation are, in a clone and installed, and what its programs are called there."""

from pathlib import Path

# Of the clone; or the folder that is installed, which holds the daemon, sim/ as the clone has it, and sim/bin of a build.
ROOT = Path(__file__).resolve().parents[2]
INSTALLED_DAEMON = ROOT / "tarveld"

CARD_PROGRAM, LAN_PROGRAM = (
    ("tarvel-card", "tarvel-lan") if INSTALLED_DAEMON.is_file() else ("scripts/card", "sim/lan")
)
