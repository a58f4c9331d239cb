# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Finds LANs that run, from outside of them, for those who want to look inside."""

import json
import os
import shutil
import tempfile
from collections.abc import Sequence
from dataclasses import dataclass
from pathlib import Path

from . import namespaces
from .errors import SimError
from .launch import PREFIX

_BENCH = "bench"
_SHELL = ["bash", "--noprofile", "--norc"]


@dataclass(frozen=True)
class RunningCard:
    """A card of a LAN; its process number counts inside the LAN."""

    name: str
    hostname: str | None
    pid: int
    addresses: dict[str, str]
    directory: Path


@dataclass(frozen=True)
class RunningLan:
    run_dir: Path
    pid: int

    def cards(self) -> list[RunningCard]:
        return [_read_card(note) for note in sorted(self.run_dir.glob("*/card.json"))]

    def enter(self, command: Sequence[str]) -> list[str]:
        """A command line that runs the command on the client side."""
        return namespaces.enter_lan_command(self.pid, ["env", f"TARVEL_LAN={self.run_dir}", *command])

    def enter_card(self, card: RunningCard, command: Sequence[str]) -> list[str]:
        variables = ["PATH=/run/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/", "CARD_UNRECORDED=1"]
        inside = ["env", "-i", *variables, f"TERM={os.environ.get('TERM', 'dumb')}", *command]
        return self.enter(namespaces.enter_card_command(card.pid, inside))


def _read_card(note: Path) -> RunningCard:
    about = json.loads(note.read_text())
    return RunningCard(note.parent.name, about["hostname"], about["pid"], about["addresses"], note.parent)


def _read_lan(run_dir: Path) -> RunningLan | None:
    """None if it has ended, or is only about to start."""
    try:
        pid = int((run_dir / "pid").read_text())
        words = Path(f"/proc/{pid}/cmdline").read_bytes().split(b"\0")
    except (OSError, ValueError):
        return None
    # After a crash the number may be that of any process by now.
    return RunningLan(run_dir, pid) if str(run_dir).encode() in words else None


def running_lans() -> list[RunningLan]:
    """This user's; what a LAN has left behind that was killed with its guardian is removed on the way."""
    lans = []
    for run_dir in sorted(Path(tempfile.gettempdir()).glob(PREFIX + "*")):
        if run_dir.stat().st_uid != os.getuid():
            continue
        lan = _read_lan(run_dir)
        if lan is not None:
            lans.append(lan)
        elif (run_dir / "pid").exists():
            shutil.rmtree(run_dir, ignore_errors=True)
    return lans


def mark_as_bench(run_dir: Path) -> None:
    """Says that the LAN is there to be looked into, unlike that of a test."""
    (run_dir / _BENCH).touch()


def lans_to_look_into() -> list[RunningLan]:
    """Those that people have started; others, such as a test's, only if there are none of these."""
    lans = running_lans()
    return [lan for lan in lans if (lan.run_dir / _BENCH).exists()] or lans


def the_lan() -> RunningLan:
    lans = lans_to_look_into()
    if len(lans) == 1:
        return lans[0]
    if not lans:
        raise SimError("no simulated card is running; start one with: scripts/card run")
    raise SimError("several LANs are running; stop all but one: " + ", ".join(str(lan.run_dir) for lan in lans))


def find_card(name: str) -> tuple[RunningLan, RunningCard]:
    found = [(lan, card) for lan in lans_to_look_into() for card in lan.cards() if card.name == name]
    if len(found) == 1:
        return found[0]
    if found:
        raise SimError(f"several LANs have a {name}; stop all but one")
    known = [card.name for lan in lans_to_look_into() for card in lan.cards()]
    raise SimError(f"no card {name} is running; " + (f"there is {', '.join(known)}" if known else "none is"))


def shell(prompt: str) -> list[str]:
    return ["env", f"PS1={prompt}", *_SHELL]
