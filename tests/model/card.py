# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Everything of a card that a request can read or change, and what the daemon tells of it."""

import os
from collections import Counter
from dataclasses import dataclass, field, replace
from errno import ENOENT

from .settings import Settings

DRAV_FILE = "/tmp/drav_pnr_assy"
VEMK_FILE = "/tmp/vemk_pnr_assy"
FLASH_DEVICE = "/dev/mtd0ro"
PART_NUMBERS = "/etc/pnr/"


@dataclass(frozen=True)
class Fault:
    """A program that does nothing but end with a status, if its arguments contain the text."""

    status: int
    matching: str = ""


@dataclass(frozen=True)
class Refusal:
    """The one thing that the system does not do for the daemon: the so many-th of its kind, and why."""

    operation: str
    number: int
    error: str


@dataclass
class Card:
    host_name: str
    settings: Settings
    files: dict[str, bytes]  # by path; those that the daemon reads
    upgrade_tree: dict[str, bytes] = field(default_factory=dict)  # by path below /tmp/upgrade
    ntp_enabled: bool = False
    replication_pending: bool = False
    faults: dict[str, Fault] = field(default_factory=dict)  # by program
    big_endian: bool = False  # the host's order shows where a section is taken as it came
    narrow_long: bool = False  # of 32 bits: strtoul() makes of a larger number the largest there is
    log: list[str] = field(default_factory=list)  # "level text"
    commands: list[str] = field(default_factory=list)  # texts given to the shell
    console: list[str] = field(default_factory=list)  # of what the system refused, and of archives
    has_ended: bool = False  # the daemon
    refusal: Refusal | None = None
    asked: Counter[str] = field(default_factory=Counter)  # how often the system was asked for what it may refuse

    def copy(self) -> "Card":
        """With records of its own; what stands in them is replaced, never changed."""
        records = {
            name: type(value)(value) for name, value in vars(self).items() if isinstance(value, (dict, list, Counter))
        }
        return replace(self, settings=self.settings.copy(), **records)

    def info(self, text: str) -> None:
        self.log.append(f"info {text}")

    def warning(self, text: str) -> None:
        self.log.append(f"warning {text}")

    def debug(self, text: str) -> None:
        self.log.append(f"debug {text}")

    def error(self, text: str) -> None:
        self.log.append(f"err {text}")

    def refuses(self, operation: str) -> bool:
        """Whether the system does not do it this time."""
        self.asked[operation] += 1
        refusal = self.refusal
        return refusal is not None and (operation, self.asked[operation]) == (refusal.operation, refusal.number)

    @property
    def why(self) -> str:
        """The text of errno."""
        return self.refusal.error if self.refusal is not None else ""

    def has_file(self, path: str) -> bool:
        return not self.refuses(f"stat {path}") and path in self.files

    def first_line(self, path: str) -> bytes | None:
        """Up to 1023 bytes in front of the newline; nothing of an empty or missing file."""
        if self.refuses(f"open {path}"):
            self.console.append(f"fopen() failed: {self.why}")
            return None
        content = self.files.get(path)
        if content is None:
            self.console.append(f"fopen() failed: {os.strerror(ENOENT)}")
            return None
        line: bytes | None = None
        if self.refuses(f"read {path}"):
            self.console.append(f"fgets() failed or file is empty: {self.why}")
        elif not content:
            self.console.append(f"fgets() failed or file is empty: {os.strerror(0)}")
        else:
            line = content[: content.index(b"\n") + 1] if b"\n" in content else content
            line = line[:1023].split(b"\n")[0].split(b"\0")[0]
        if self.refuses(f"close {path}"):
            self.console.append(f"fclose() FAILED: {self.why}")
        return line
