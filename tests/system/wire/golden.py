# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""One exchange a command, byte for byte, with a card named "card1" as it comes from the factory.

They are the worked examples of docs/protocol.md, written there by hand, never by a program that encodes: this is what
the codecs are measured against.
"""

import re
from dataclasses import dataclass
from pathlib import Path

from .numbers import Command

PAGE = Path(__file__).resolve().parents[3] / "docs/protocol.md"

_ROW = re.compile(r"^\| (\d+) \| [^|]+ \| (TCP|UDP) \| (reads|changes) \|", re.MULTILINE)
# Attributes of the reply, whose values in the example show only the form: "`A`, `B` and `C` differ from run to run".
_CHANGING = re.compile(r"((?:`\w+`(?:,|\s+and)?\s+)+)differs?\s+from\s+run\s+to\s+run")
_EXAMPLE = re.compile(r"^### (\d+): (.+)$", re.MULTILINE)
# A dump's line: up to 16 bytes, then blanks and a remark or the bytes as text.
_DUMP_LINE = re.compile(r" {4}((?:[0-9a-f]{2} ){0,15}[0-9a-f]{2})(?: {3,}.*)?")


@dataclass(frozen=True)
class Exchange:
    name: str
    request: bytes
    reply: bytes
    changing: tuple[str, ...] = ()  # attributes of the reply that differ from run to run

    def __str__(self) -> str:
        return self.name


def dumps(text: str) -> list[bytes]:
    """The bytes of each block of consecutive dump lines."""
    found = [b""]
    for line in text.splitlines():
        match = _DUMP_LINE.fullmatch(line)
        if match:
            found[-1] += bytes.fromhex(match[1])
        elif found[-1]:
            found.append(b"")
    return [dump for dump in found if dump]


def read_exchanges(page: str) -> dict[int, Exchange]:
    """The example under the heading of each command, by the command's number."""
    _, *parts = _EXAMPLE.split(page)
    exchanges = {}
    for number, name, section in zip(parts[::3], parts[1::3], parts[2::3], strict=True):
        example = section.partition("\n### ")[0]
        request, reply, *_ = dumps(example)
        changing = re.findall(r"\w+(?=`)", " ".join(_CHANGING.findall(example)))
        exchanges[int(number)] = Exchange(name, request, reply, tuple(changing))
    return exchanges


def read_transports(page: str) -> dict[int, str]:
    """What the table of commands says over what each of them travels."""
    return {int(number): transport for number, transport, _ in _ROW.findall(page)}


def read_readings(page: str) -> frozenset[int]:
    """The commands that leave a card as it is."""
    return frozenset(int(number) for number, _, effect in _ROW.findall(page) if effect == "reads")


_PAGE_TEXT = PAGE.read_text(encoding="utf-8")
BY_NUMBER = read_exchanges(_PAGE_TEXT)
_TRANSPORTS = read_transports(_PAGE_TEXT)

VERSIONS = BY_NUMBER[Command.VERSIONS]
UPLOAD = BY_NUMBER[Command.UPLOAD]
UPGRADE = BY_NUMBER[Command.UPGRADE]
TIME_GET = BY_NUMBER[Command.TIME_GET]
TIME_SET = BY_NUMBER[Command.TIME_SET]
IP_GET = BY_NUMBER[Command.IP_GET]
IP_SET = BY_NUMBER[Command.IP_SET]
REBOOT = BY_NUMBER[Command.REBOOT]

TCP = tuple(exchange for number, exchange in BY_NUMBER.items() if _TRANSPORTS.get(number) == "TCP")
UDP = tuple(exchange for number, exchange in BY_NUMBER.items() if _TRANSPORTS.get(number) == "UDP")
EVERY = TCP + UDP
READING = read_readings(_PAGE_TEXT)
