# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the simulated cards need."""

import os
from collections import Counter
from pathlib import Path

# Behind the name in a process' "stat": its own times, and those of its children that have ended.
_TIMES = slice(11, 15)
_KINDS = {"tarveld": "daemons", "sleep": "their network daemons"}


def shares() -> Counter[str]:
    """Megabytes of all processes of this LAN by kind; a page that several use counts once (PSS)."""
    sums: Counter[str] = Counter()
    for process in Path("/proc").glob("[0-9]*"):
        try:
            program = (process / "comm").read_text().strip()
            lines = (process / "smaps_rollup").read_text().splitlines()
        except OSError:
            continue  # it has ended
        kilobytes = next(int(line.split()[1]) for line in lines if line.startswith("Pss:"))
        sums[_KINDS.get(program, "first processes of the cards, and the LAN")] += kilobytes
    return Counter({kind: round(kilobytes / 1024) for kind, kilobytes in sums.items()})


def computing_time() -> float:
    """Seconds of all processes of this LAN until now, those that have ended among them, in programs and in the kernel."""
    ticks = 0
    for process in Path("/proc").glob("[0-9]*"):
        try:
            figures = (process / "stat").read_text().rpartition(")")[2].split()
        except OSError:
            continue  # it has ended, and its parent has its time
        ticks += sum(map(int, figures[_TIMES]))
    return ticks / os.sysconf("SC_CLK_TCK")


def available() -> int:
    """Megabytes that the machine could still give, the kernel's own use counted."""
    lines = Path("/proc/meminfo").read_text(encoding="ascii").splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith("MemAvailable:")) // 1024
