# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Cables that lose, delay and slow down what goes through them: what `tc` can do with the kernel's netem."""

import shutil
import subprocess
from collections.abc import Sequence
from dataclasses import dataclass

from .errors import SimError

_NOT_IN_KERNEL = ("Specified qdisc kind is unknown", "RTNETLINK answers: No such file or directory")


@dataclass(frozen=True)
class Link:
    """The same in either direction. Nothing: a cable that is nothing but a cable."""

    loss: float = 0  # percent
    latency: float = 0  # milliseconds
    rate: float = 0  # kilobits a second

    def __post_init__(self) -> None:
        if not 0 <= self.loss <= 100 or self.latency < 0 or self.rate < 0:
            raise SimError("a cable loses 0 to 100 percent, and its latency and rate are no less than 0")

    @property
    def is_perfect(self) -> bool:
        return self == Link()

    def command(self, device: str) -> str:
        """For what leaves through the device."""
        words = [f"qdisc add dev {device} root netem"]
        words += [f"delay {self.latency:g}ms"] if self.latency else []
        words += [f"loss {self.loss:g}%"] if self.loss else []
        words += [f"rate {self.rate:g}kbit"] if self.rate else []
        return " ".join(words)

    def shape(self, devices: Sequence[str], there: Sequence[str]) -> None:
        """`there`: what stands before a command for the network namespace of the devices."""
        if shutil.which("tc") is None:
            raise SimError("there is no tc, which makes cables with a loss, a latency or a rate (Debian: iproute2)")
        commands = "\n".join(self.command(device) for device in devices) + "\n"
        done = subprocess.run([*there, "tc", "-batch", "-"], input=commands, text=True, capture_output=True, check=False)
        if any(text in done.stderr for text in _NOT_IN_KERNEL):
            raise SimError(
                "the kernel of this machine has no netem (sch_netem), which makes cables with a loss, a latency or a rate: "
                'run "modprobe sch_netem" as root, or use a kernel with CONFIG_NET_SCH_NETEM'
            )
        if done.returncode != 0:
            raise SimError(f"tc: {commands.strip()}: {done.stderr.strip()}")
