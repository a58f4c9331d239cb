# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What may be different from one card to the next."""

import base64
import os
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any

from . import binaries, places, plan
from .link import Link

SAME_AS_NAME = "\0"
FAST_DELAYS, REAL_DELAYS = 0.01, 1.0
# Where the card sees the machine's own directories; nothing has to be bound there.
_SYSTEM = ("/usr", "/bin", "/sbin", "/lib", "/etc")


@dataclass(frozen=True)
class CardOptions:
    """The keyword arguments of Lan.card()."""

    # The daemon's command line, with absolute paths; None: the daemon of this tree, or TARVELD.
    command: Sequence[str] | None = None
    # Added to the daemon's environment.
    env: Mapping[str, str] = field(default_factory=dict)
    # Whether the daemon is started at boot, and whether it is started again when it ends.
    autostart: bool = True
    supervised: bool = True
    # A card without one of its devices is a broken card, for tests of abnormal starts.
    devices: Sequence[str] = plan.CARD_DEVICES
    # None: the card has no host name in its settings.
    hostname: str | None = SAME_AS_NAME
    # The addresses that the devices have from the factory; for a device that is not there it is that of the plan.
    static: Mapping[str, str] = field(default_factory=dict)
    # A slow card's daemon runs for half a second, stands still for so many seconds, and so on.
    standstill: float = 0
    # What the card's cables do to what goes through them.
    link: Link = Link()
    # Written before the daemon starts for the first time; None removes the file.
    files: Mapping[str, bytes | str | None] = field(default_factory=dict)
    # Further paths that the card must see although they are below a directory that it has for itself, like /tmp.
    binds: Sequence[str | os.PathLike[str]] = ()
    # Seconds that the card is down in a reboot: a real one is seen to be away.
    reboot_time: float = 2
    # The factor of the platform's own delays: FAST_DELAYS or REAL_DELAYS. Their order and outcomes are always the same.
    delays: float = FAST_DELAYS

    def settings(self, name: str, directory: Path) -> dict[str, Any]:
        """What the card's first process must know, beside its addresses."""
        programs = binaries.sim_programs()
        command = list(self.command or binaries.daemon_command())
        return {
            "name": name,
            "hostname": self.hostname_of(name),
            "directory": str(directory),
            "programs": programs,
            "command": command,
            "environment": dict(self.env),
            "binds": _needed([places.ROOT, *_folders([*command, *programs.values()]), *self.binds]),
            "files": {path: _encoded(content) for path, content in self.files.items()},
            "autostart": self.autostart,
            "supervised": self.supervised,
            "reboot_time": self.reboot_time,
            "delays": self.delays,
            "standstill": self.standstill,
        }

    def hostname_of(self, name: str) -> str | None:
        return name if self.hostname == SAME_AS_NAME else self.hostname


def _folders(words: Iterable[str]) -> list[str]:
    return [os.path.dirname(word) for word in words if word.startswith("/") and os.path.exists(word)]


def _needed(paths: Iterable[str | os.PathLike[str]]) -> list[str]:
    """Without those that are there anyway, by themselves or inside of another."""
    chosen: list[str] = []
    for path in (os.fspath(path) for path in paths):
        if not any(path == top or path.startswith(top + "/") for top in (*_SYSTEM, *chosen)):
            chosen.append(path)
    return chosen


def _encoded(content: bytes | str | None) -> str | None:
    if content is None:
        return None
    return base64.b64encode(content.encode() if isinstance(content, str) else content).decode()
