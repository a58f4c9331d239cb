# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a card is told when it is made.

The LAN side sends it as JSON on the card's standard input; it is kept in the card's directory because the stand-in for
the network script needs it too.
"""

import json
from dataclasses import asdict, dataclass, field
from pathlib import Path

DIRECTORY = Path("/run/card")


@dataclass
class Settings:
    name: str
    hostname: str | None
    directory: str
    programs: dict[str, str]
    addresses: dict[str, dict[str, str]]
    command: list[str]
    environment: dict[str, str] = field(default_factory=dict)
    binds: list[str] = field(default_factory=list)
    files: dict[str, str | None] = field(default_factory=dict)
    autostart: bool = True
    supervised: bool = True
    reboot_time: float = 2
    delays: float = 1
    standstill: float = 0

    @staticmethod
    def parse(text: str) -> "Settings":
        return Settings(**json.loads(text))

    @staticmethod
    def load() -> "Settings":
        return Settings.parse((DIRECTORY / "settings.json").read_text())

    def save(self) -> None:
        (DIRECTORY / "settings.json").write_text(json.dumps(asdict(self), indent=2) + "\n")
