# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated LAN, as seen by a process on its client side."""

import json
import os
import shutil
import subprocess
from collections.abc import Sequence
from pathlib import Path
from typing import Any

from . import plan
from .card import Card
from .errors import NotInLan, SimError
from .nursery import Nursery
from .options import CardOptions
from .places import LAN_PROGRAM


class Lan:
    """Made by current(). Cards are numbered from 2, but for card1; a number is free again when its card has stopped."""

    def __init__(self, run_dir: Path) -> None:
        self.run_dir = run_dir
        self._cards: dict[str, Card] = {}
        self.nursery = Nursery(run_dir)  # for cards only

    @staticmethod
    def current() -> "Lan":
        """The LAN that this process was started in by `sim/lan`."""
        if "TARVEL_LAN" not in os.environ:
            raise NotInLan(f"this program must be started by {LAN_PROGRAM}, for example: {LAN_PROGRAM} python3 -m pytest")
        return Lan(Path(os.environ["TARVEL_LAN"]))

    def address(self, device: str) -> str:
        """The client's own address on lan0 or lan1."""
        return plan.segment_of(device).client_address

    def card(self, name: str = "card1", **options: Any) -> Card:
        """A new card; it does not run yet. The options are those of CardOptions."""
        if name in self._cards or (self.run_dir / name / "card.json").exists():
            raise SimError(f"there is a card {name} already")
        shutil.rmtree(self.run_dir / name, ignore_errors=True)
        card = Card(self, name, self._free_number(name), CardOptions(**options))
        self._cards[name] = card
        return card

    def cards(self) -> list[Card]:
        """The running cards that this process has made."""
        return [card for card in self._cards.values() if card.running]

    def _free_number(self, name: str) -> int:
        # Kept for card1, which so has the addresses of the worked examples in docs/protocol.md, whoever was there before it.
        if name == "card1":
            return 1
        others = (json.loads(note.read_text())["number"] for note in self.run_dir.glob("*/card.json"))
        used = {card.number for card in self._cards.values()} | set(others)
        number = next(number for number in range(2, plan.MOST_CARDS + 2) if number not in used)
        if number > plan.MOST_CARDS:
            raise SimError("too many cards")
        return number

    # For cards only

    def ip(self, commands: Sequence[str]) -> None:
        done = subprocess.run(
            ["ip", "-batch", "-"], input="\n".join(commands) + "\n", text=True, capture_output=True, check=False
        )
        if done.returncode != 0:
            raise SimError(f"ip: {list(commands)}: {done.stderr.strip()}")

    def note_card(self, card: Card) -> None:
        """Leaves word for those who look at the LAN from outside."""
        about: dict[str, Any] = {"pid": card.init_pid, "number": card.number, "hostname": card.hostname}
        about["addresses"] = card.planned_addresses()
        (card.directory / "card.json").write_text(json.dumps(about) + "\n")

    def forget_card(self, card: Card, ports: Sequence[str]) -> None:
        (card.directory / "card.json").unlink(missing_ok=True)
        self._cards.pop(card.name, None)
        for port in ports:
            # The kernel removes a vanished card's cable in its own time; the next card may want the name at once.
            subprocess.run(["ip", "link", "delete", port], capture_output=True, check=False)
