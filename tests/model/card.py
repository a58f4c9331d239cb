# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Everything of a card that a request can read or change, and what the daemon tells of it."""

from dataclasses import dataclass, field

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

    def info(self, text: str) -> None:
        self.log.append(f"info {text}")

    def warning(self, text: str) -> None:
        self.log.append(f"warning {text}")

    def debug(self, text: str) -> None:
        self.log.append(f"debug {text}")

    def first_line(self, path: str) -> bytes | None:
        """Up to 1023 bytes in front of the newline; nothing of an empty or missing file."""
        content = self.files.get(path)
        if not content:
            return None
        line = content[: content.index(b"\n") + 1] if b"\n" in content else content
        return line[:1023].split(b"\n")[0].split(b"\0")[0]
