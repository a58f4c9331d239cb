# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a session consists of, in a form that the model and a real card can both play."""

from dataclasses import dataclass, field

from model import Fault
from model.settings import Value
from model.stream import LastWords


@dataclass(frozen=True)
class Connection:
    """Everything that a client sends over TCP before it ends its side."""

    data: bytes
    messages: int = 1


@dataclass(frozen=True)
class Datagrams:
    """Sent one after the other from one socket on the side of a device; None goes to everybody, else to the card."""

    device: str
    datagrams: tuple[bytes, ...]
    by_broadcast: bool = False

    @property
    def messages(self) -> int:
        return len(self.datagrams)


Action = Connection | Datagrams


@dataclass(frozen=True)
class Setup:
    """The state of the card in front of an action; what is not named stays."""

    files: dict[str, bytes | None] = field(default_factory=dict)
    options: dict[str, Value | None] | None = None  # of the two interfaces and the time server; replaces them all
    faults: dict[str, Fault] | None = None


@dataclass
class Outcome:
    replies: list[tuple[str, bytes]]  # where to and what
    log: list[str]
    commands: list[str]
    last_words: LastWords | None = None  # of a connection that is foreseen to be closed by the card
