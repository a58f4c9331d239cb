# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""New firmware in waves: up to a card that fails, and on from there once it is mended."""

import json
import shlex
from collections import Counter
from collections.abc import Mapping

from commands import check
from firmware import pack_firmware
from folding import folded
from narrator import say, show
from playing import Played
from sites import DEVICE, GROUPS, Site

_INSTALL, _LOOK = "Have the release on the card", "See that the whole wave has it"
_KERNEL = "KERN-7.0.0"
_VERIFICATION_FAILED = 7
_STOPPED = 2
_WORDS = ["-i", "site.cards.yml", "tarvel.cards.rollout", "-e", "@release.json"]


class Rollout:
    """Leaves inventory, archive and settings with the operator."""

    def __init__(self, site: Site) -> None:
        self._site = site
        self._names = {card.name for card in site.cards}
        self._broken = site.cards[1]  # behind the first, which is a wave of its own
        archive = pack_firmware(site.folder, {"kernel": _KERNEL})
        self._write("site.cards.yml", {"plugin": "tarvel.cards.discover", "groups_file": GROUPS, "interfaces": [DEVICE]})
        self._write(
            "release.json",
            {
                "rollout_src": str(archive),
                "rollout_expect": {"kernel": _KERNEL},
                "rollout_timeout": site.patience,
            },
        )

    def _write(self, name: str, settings: Mapping[str, object]) -> None:
        (self._site.folder / name).write_text(json.dumps(settings) + "\n", encoding="ascii")

    def kernels(self) -> Counter[str]:
        """How many cards have which, as is written on the cards themselves."""
        return Counter(self._kernel_of().values())

    def _kernel_of(self) -> dict[str, str]:
        return {card.name: card.inside.read("/etc/pnr/kernel").strip() for card in self._site.cards}

    def _done(self) -> set[str]:
        return {name for name, kernel in self._kernel_of().items() if kernel == _KERNEL}

    def _play(self, code: int = 0) -> Played:
        show([f"$ {shlex.join(['ansible-playbook', *_WORDS])}"])
        played = self._site.ansible.playbook(*_WORDS, code=code)
        show(folded(played.said.splitlines()))
        return played

    def stop_at_broken_card(self) -> set[str]:
        """The names of the cards that have not got the release."""
        self._broken.inside.fail("fwupgrade")
        say(f"One card at first, then a tenth of them, then all. Nobody knows that on {self._broken.name} no upgrade works.")
        played = self._play(_STOPPED)
        reached = played.hosts(_INSTALL)
        check(self._broken.name in reached, f"{self._broken.name} was not reached: an earlier card has failed")
        broken = played[_INSTALL, self._broken.name]
        check(broken.get("rc") == _VERIFICATION_FAILED, f"{self._broken.name} has not failed as it should: {broken}")
        check(reached < self._names, "the roll-out has not stopped: no card is left")
        done = self._done()
        check(done == reached - {self._broken.name}, f"the release is on {sorted(done)} after a stop at {sorted(reached)}")
        untouched = len(self._names - reached)
        say(f"The release is on {len(done)} of {len(self._names)} cards, not on {self._broken.name}; {untouched} were not touched.")
        return self._names - done

    def mend(self) -> None:
        self._broken.inside.heal("fwupgrade")

    def go_on(self, rest: set[str]) -> None:
        """The same command once more. The rest is the names of those that are to be changed."""
        played = self._play()
        changed = {host for host in played.hosts(_INSTALL) if played[_INSTALL, host]["changed"]}
        check(changed == rest, f"changed were {sorted(changed)} instead of {sorted(rest)}")
        done = self._done()
        check(done == self._names, f"without the release: {sorted(self._names - done)}")
        check(played.hosts(_LOOK) == self._names, "not every card was looked at afterwards")
        say(f"It changed the {len(changed)} that had not got it, and left the others alone: all {len(done)} have it now.")
