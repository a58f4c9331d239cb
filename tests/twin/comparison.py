# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the model foresees of an action, and in what the card differs."""

import re
from difflib import unified_diff

from model import Card, UdpPort, serve_connection
from model.card import PART_NUMBERS
from model.settings import Value
from wire import masked

from . import configuration
from .actions import Action, Connection, Outcome, Setup
from .rig import MARKER, NTP_LINK, TCP, Rig

# After these words a line has a text of libxml2 or of the C library.
_FOREIGN = re.compile(
    r"(xmlReaderForDoc\(\) failed: |xmlTextReaderRead\(\) failed: |xmlTextReaderGetAttribute\(\) failed: "
    r"|Getting \w+ attribute FAILED: ).*",
    re.DOTALL,
)
# musl has 1024 bytes for a line, with the time and the name in front of it.
_SHORTEST_CUT = 900
_HALF_A_LETTER = re.compile(r"(\\x[0-9a-f]{2}){1,3}$")
_UNFIXED = "warning *"


def foresee(card: Card, action: Action, ports: dict[str, tuple[str, int]]) -> tuple[Card, Outcome]:
    """The card as it will be, and what is to be seen."""
    future = card.copy()
    future.log, future.commands, future.console = [], [], []
    if isinstance(action, Connection):
        stream = serve_connection(future, *ports[TCP], action.data)
        replies = [("", stream.answered)] if stream.answered else []
        return future, Outcome(replies, future.log, future.commands, stream.last_words)
    port = UdpPort(future, *ports[action.device])
    answers = (port.receive(datagram) for datagram in action.datagrams)
    replies = [(answer.destination, answer.data) for answer in answers if answer is not None]
    return future, Outcome(replies, future.log, future.commands)


def prepare(card: Card, setup: Setup) -> None:
    """What Rig.prepare() does, on the model."""
    for path, content in setup.files.items():
        card.files.pop(path, None)
        if content is not None:
            card.files[path] = content
    if setup.options is not None:
        card.settings.committed = configuration.settings(setup.options, card.host_name)
        card.settings.staged = {}
    if setup.faults is not None:
        card.faults = dict(setup.faults)


def differences(expected: Outcome, seen: Outcome, cut_lines: bool = False) -> list[str]:
    """With cut_lines the card's C library may leave the end of a long line away."""
    pairs = [
        ("replies", [_told(reply) for reply in expected.replies], [_told(reply) for reply in seen.replies]),
        ("log", _masked(expected.log), _masked(_like(expected.log, seen.log, cut_lines))),
        ("commands", expected.commands, seen.commands),
    ]
    lines: list[str] = []
    for what, ours, theirs in pairs:
        if ours != theirs:
            lines += unified_diff(ours, theirs, f"{what} of the model", f"{what} of the card", lineterm="")
    return lines


def _told(reply: tuple[str, bytes]) -> str:
    destination, data = reply
    return f"{destination} {masked(data)!r}"


def _masked(lines: list[str]) -> list[str]:
    return [_FOREIGN.sub(r"\1*", line.rstrip("\n")) for line in lines]


def _like(expected: list[str], seen: list[str], cut_lines: bool) -> list[str]:
    """With what may be said in any words, or may be left away, replaced as expected."""
    if len(expected) != len(seen):
        return seen
    return [mine if _is_as_good(mine, theirs, cut_lines) else theirs for mine, theirs in zip(expected, seen)]


def _is_as_good(mine: str, theirs: str, cut_lines: bool) -> bool:
    if mine == _UNFIXED:
        return theirs.startswith("warning ")
    is_long = cut_lines and len(theirs.encode("utf-8", "surrogateescape")) >= _SHORTEST_CUT
    return is_long and mine.startswith(_HALF_A_LETTER.sub("", theirs))


def state_differences(card: Card, rig: Rig) -> list[str]:
    """Of the files that requests leave behind."""
    pairs = [
        ("settings", _relevant(card.settings.view()), _relevant(rig.settings())),
        ("part numbers", {k: v for k, v in card.files.items() if k.startswith(PART_NUMBERS)}, rig.part_numbers()),
        ("/tmp/upgrade", card.upgrade_tree, rig.upgrade_tree()),
        ("NTP link", card.ntp_enabled, rig.card.inside.exists(NTP_LINK)),
        ("replication marker", card.replication_pending, rig.card.inside.exists(MARKER)),
    ]
    return [f"{what}: {ours!r} in the model, {theirs!r} on the card" for what, ours, theirs in pairs if ours != theirs]


def adopt_state(card: Card, rig: Rig) -> None:
    """The model goes on from the state of the card."""
    card.settings.committed, card.settings.staged = rig.settings(), {}
    card.files = {name: data for name, data in card.files.items() if not name.startswith(PART_NUMBERS)} | rig.part_numbers()
    card.upgrade_tree = rig.upgrade_tree()
    card.ntp_enabled = rig.card.inside.exists(NTP_LINK)
    card.replication_pending = rig.card.inside.exists(MARKER)


def _relevant(settings: dict[str, Value]) -> dict[str, Value]:
    """The settings that requests know."""
    return {
        key: value
        for key, value in settings.items()
        if key.startswith("network.lanvemt2eth") or key == "system.ntp.server"
    }
