# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated LAN, as seen by a process on its client side."""

import json
import os
import shutil
from collections.abc import Sequence
from pathlib import Path
from typing import Any

from . import switches
from .card import Card
from .errors import NotInLan, SimError
from .link import Link
from .nursery import Nursery
from .options import CardOptions
from .places import LAN_PROGRAM
from .plan import Place, Plan


class Lan:
    """Made by current(). Cards are numbered from 2, but for card1; a number is free again when its card has stopped.

    Where there are several LANs side by side this is all of them: the client sits on each.
    """

    def __init__(self, run_dir: Path) -> None:
        self.run_dir = run_dir
        self.plan = Plan.load(run_dir)
        self._cards: dict[str, Card] = {}
        self.nursery = Nursery(run_dir)  # for cards only

    @staticmethod
    def current() -> "Lan":
        """The LAN that this process was started in by `sim/lan`."""
        if "TARVEL_LAN" not in os.environ:
            raise NotInLan(f"this program must be started by {LAN_PROGRAM}, for example: {LAN_PROGRAM} python3 -m pytest")
        return Lan(Path(os.environ["TARVEL_LAN"]))

    def address(self, device: str) -> str:
        """The client's own address on lan0, lan1, and so on."""
        return self.plan.segment_of_client(device).client_address

    def card(self, name: str = "card1", place: Place | None = None, **options: Any) -> Card:
        """A new card; it does not run yet. The options are those of CardOptions. Who gives it a place sees to it that no
        other card has that."""
        if name in self._cards or (self.run_dir / name / "card.json").exists():
            raise SimError(f"there is a card {name} already")
        shutil.rmtree(self.run_dir / name, ignore_errors=True)
        card = Card(self, name, place or Place(0, self._free_number(name)), CardOptions(**options))
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
        number = next(number for number in range(2, self.plan.most_cards + 2) if number not in used)
        if number > self.plan.most_cards:
            raise SimError("too many cards")
        return number

    # For cards only

    def run_ip(self, commands: Sequence[str]) -> None:
        """Where the LAN's ends of cables are."""
        switches.run_ip(self.plan, self.run_dir, commands)

    def shape(self, link: Link, ports: Sequence[str]) -> None:
        link.shape(ports, switches.enter(self.plan, self.run_dir))

    def note_card(self, card: Card) -> None:
        """Leaves word for those who look at the LAN from outside."""
        about: dict[str, Any] = {"pid": card.init_pid, "number": card.number, "hostname": card.hostname}
        about["addresses"] = card.planned_addresses()
        (card.directory / "card.json").write_text(json.dumps(about) + "\n")

    def forget_card(self, card: Card, ports: Sequence[str]) -> None:
        (card.directory / "card.json").unlink(missing_ok=True)
        self._cards.pop(card.name, None)
        for port in ports:
            # The next card may want the name at once.
            switches.remove_port(self.plan, self.run_dir, port)
