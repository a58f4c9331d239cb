# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The cards of a site, and the operator who looks after them."""

from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path

from commands import run_shown
from playing import CLIENT, Ansible
from tarvelsim import Card, Lan, fleet

DEVICE = "lan0"  # where the operator looks for cards; each of them is on another network, too
GROUPS = "config/tarvelctl/groups"


@dataclass(frozen=True)
class Site:
    lan: Lan
    cards: Sequence[Card]  # card1, card2, and so on
    ansible: Ansible
    patience: int  # seconds: no card is slow, but the machine may be that they all share with others

    @property
    def folder(self) -> Path:
        """The operator's."""
        return self.ansible.folder

    @property
    def names(self) -> str:
        return f"card[1-{len(self.cards)}]"

    def tarvelctl(self, *words: str, most: int | None = None) -> str:
        """Shows so many lines of what it prints, and gives all of them."""
        command = [str(CLIENT), "--timeout", str(self.patience), *words]
        return run_shown(command, environment=self.ansible.environment, folder=self.folder, most=most)

    def write_groups(self, lines: Sequence[str]) -> None:
        groups = self.folder / GROUPS
        groups.parent.mkdir(parents=True, exist_ok=True)
        groups.write_text("".join(f"{line}\n" for line in lines), encoding="ascii")


@contextmanager
def running_site(count: int, folder: Path, patience: int = 120) -> Iterator[Site]:
    """On the LAN of this process, on which there are no others."""
    lan = Lan.current()
    cards = fleet.cards(lan, [f"card{number}" for number in range(1, count + 1)])
    folder.mkdir(exist_ok=True)
    try:
        for _ in fleet.start(cards):
            pass
        yield Site(lan, cards, Ansible(folder), patience)
    finally:
        for card in cards:
            card.stop()
