# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Finds LANs that run, from outside of them, for those who want to look inside."""

import json
import os
import re
import shutil
import tempfile
from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from pathlib import Path

from . import namespaces
from .errors import SimError
from .launch import PREFIX
from .places import CARD_PROGRAM

# Holds the name that the LAN was given, if any.
_BENCH = "bench"
_NAME = re.compile(r"[A-Za-z0-9][A-Za-z0-9_.-]*")
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

    @property
    def name(self) -> str:
        """What it was called when it was started, else what tells its directory from others."""
        note = self.run_dir / _BENCH
        given = note.read_text(encoding="ascii") if note.exists() else ""
        return given or self.run_dir.name.removeprefix(PREFIX)

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


def require_unused(name: str) -> None:
    """Raises SimError unless a LAN can be called so."""
    if not _NAME.fullmatch(name):
        raise SimError(f'a LAN cannot be called "{name}": letters, digits, and . _ - behind the first of them')
    if name in (lan.name for lan in running_lans()):
        raise SimError(f"a LAN called {name} is running already")


def mark_as_bench(run_dir: Path, name: str = "") -> None:
    """Says that the LAN is there to be looked into, unlike that of a test."""
    (run_dir / _BENCH).write_text(name, encoding="ascii")


def lans_to_look_into(name: str | None = None) -> list[RunningLan]:
    """The one of that name. Without a name those that people have started; others, such as a test's, only if there are
    none of these."""
    lans = running_lans()
    if name is not None:
        found = [lan for lan in lans if lan.name == name]
        if not found:
            raise SimError(f"no LAN called {name} is running" + (f"; there is {_names(lans)}" if lans else ""))
        return found
    return [lan for lan in lans if (lan.run_dir / _BENCH).exists()] or lans


def the_lan(name: str | None = None) -> RunningLan:
    lans = lans_to_look_into(name)
    if not lans:
        raise SimError(f"no simulated card is running; start one with: {CARD_PROGRAM} run")
    if len(lans) > 1:
        raise SimError(f"several LANs are running; say with --lan which one: {_names(lans)}")
    return lans[0]


def find_card(card_name: str, lan_name: str | None = None) -> tuple[RunningLan, RunningCard]:
    lans = lans_to_look_into(lan_name)
    found = [(lan, card) for lan in lans for card in lan.cards() if card.name == card_name]
    if len(found) == 1:
        return found[0]
    if found:
        raise SimError(f"several LANs have a {card_name}; say with --lan which one: {_names(lan for lan, _ in found)}")
    known = [card.name for lan in lans for card in lan.cards()]
    raise SimError(f"no card {card_name} is running; " + (f"there is {', '.join(known)}" if known else "none is"))


def _names(lans: Iterable[RunningLan]) -> str:
    return ", ".join(lan.name for lan in lans)


def shell(prompt: str) -> list[str]:
    return ["env", f"PS1={prompt}", *_SHELL]
