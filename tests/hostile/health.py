# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the daemon holds: descriptors and memory of its own. After any attack both are as before."""

import os
from dataclasses import dataclass
from pathlib import Path

from tarvelsim import Card


@dataclass(frozen=True)
class Health:
    pid: int
    descriptors: int
    memory: int  # kB that nobody else has

    @staticmethod
    def of(card: Card) -> "Health":
        pid = card.daemon.pid
        if pid is None:
            return Health(0, 0, 0)
        status = Path(f"/proc/{pid}/status").read_text(encoding="ascii").splitlines()
        memory = next(int(line.split()[1]) for line in status if line.startswith("RssAnon:"))
        return Health(pid, len(os.listdir(f"/proc/{pid}/fd")), memory)

    def complaints(self, now: "Health") -> list[str]:
        if now.pid != self.pid:
            return ["the daemon did not survive"]
        found = []
        if now.descriptors != self.descriptors:
            found.append(f"{now.descriptors} descriptors instead of {self.descriptors}")
        if now.memory > self.memory:
            found.append(f"{now.memory} kB of memory instead of {self.memory}")
        return found
