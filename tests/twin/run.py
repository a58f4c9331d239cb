# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Plays random sessions, and counts."""

from dataclasses import dataclass
from random import Random

from model import Card, Unforeseeable

from . import comparison, messages, setups
from .actions import Action, Setup
from .cases import CASES
from .rig import Rig

_ACTIONS_IN_A_SESSION = 12


@dataclass
class Tally:
    messages: int = 0
    actions: int = 0
    sessions: int = 0
    left_out: int = 0  # actions, for what a shell would have made of them
    differences: int = 0


class Twin:
    def __init__(self, rig: Rig, emulated: bool = False) -> None:
        self.tally = Tally()
        self._rig = rig
        self._emulated = emulated
        self._card: Card = rig.model(emulated)

    def play(self, seed: int, wanted: int) -> None:
        """At least so many messages; each session has a seed of its own, so that it can be played alone."""
        number = seed
        while self.tally.messages < wanted:
            self.play_session(number)
            number += 1

    def play_cases(self) -> None:
        for name, (setup, action) in CASES.items():
            self.prepare(setup)
            self.play_action(action, name)

    def play_session(self, number: int) -> None:
        random = Random(number)
        self.prepare(setups.setup(random))
        for index in range(_ACTIONS_IN_A_SESSION):
            self.play_action(messages.action(random, self._card.host_name), f"session {number}, action {index}")
        found = comparison.state_differences(self._card, self._rig)
        self._report(f"session {number}", found)
        if found:
            comparison.adopt_state(self._card, self._rig)  # so that it is not told again of each later session
        self.tally.sessions += 1

    def prepare(self, setup: Setup) -> None:
        self._rig.prepare(setup)
        comparison.prepare(self._card, setup)

    def play_action(self, action: Action, name: str) -> list[str]:
        """The differences; none if the action is one that cannot be foreseen and was left out."""
        ports = self._rig.ports()
        try:
            future, expected = comparison.foresee(self._card, action, ports)
        except Unforeseeable:
            self.tally.left_out += 1
            return []
        seen = self._rig.play(action, expected.last_words)
        self._card = future
        found = comparison.differences(expected, seen, cut_lines=self._emulated)
        self._report(f"{name}: {action}", found)
        self.tally.messages += action.messages
        self.tally.actions += 1
        return found

    def _report(self, what: str, found: list[str]) -> None:
        if found:
            self.tally.differences += 1
            print(f"DIFFERENCE in {what}")
            print("\n".join(f"    {line}" for line in found), flush=True)
