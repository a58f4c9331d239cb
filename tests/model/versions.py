# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Command 1: the components of the card."""

from . import header
from .card import DRAV_FILE, FLASH_DEVICE, PART_NUMBERS, VEMK_FILE, Card
from .header import Header
from .stream import Stream

_BASE_SYSTEM = "squashfs"
_LONGEST = 2047
_BLOCK = 1024
_START, _END = b"<Versions>\n", b"</Versions>"


def report(card: Card, stream: Stream, request: Header) -> None:
    text = _START
    for name, version in _components(card):
        line = b'\t<Component Id="' + name.encode() + b'" Version="' + version + b'"/>\n'
        if len(text) + len(line) + len(_END) > _LONGEST:
            card.warning(f"Versions report is full: {name} and all components after it are left out")
            break
        text += line
    stream.answer(header.reply(request, header.SUCCESS, text + _END))


def _components(card: Card) -> list[tuple[str, bytes]]:
    components = [
        ("DravHardware", card.first_line(DRAV_FILE)),
        ("VemkHardware", card.first_line(VEMK_FILE)),
        ("BootLoader", _boot_loader(card)),
        ("BaseSystem", _version(card, _BASE_SYSTEM)),
    ]
    components += [(name, _version(card, name)) for name in _listed(card)]
    return [(name, version) for name, version in components if version is not None]


def _version(card: Card, name: str) -> bytes | None:
    path = PART_NUMBERS + name
    return card.first_line(path) if card.has_file(path) else None


def _listed(card: Card) -> list[str]:
    if card.refuses(f"list {PART_NUMBERS}"):
        return []
    names = (path.removeprefix(PART_NUMBERS) for path in card.files if path.startswith(PART_NUMBERS))
    return sorted((name for name in names if name != _BASE_SYSTEM), key=lambda name: name.encode())


def _boot_loader(card: Card) -> bytes | None:
    if card.refuses(f"open {FLASH_DEVICE}"):
        card.console.append(f"fopen() FAILED: {card.why}")
        return None
    number = None
    if card.refuses(f"read {FLASH_DEVICE}"):
        card.console.append(f"fread() failed: {card.why}")
    else:
        number = _part_number(card.files.get(FLASH_DEVICE, b"")[:_BLOCK])
    if card.refuses(f"close {FLASH_DEVICE}"):
        card.console.append(f"fclose() FAILED: {card.why}")
    return number


def _part_number(block: bytes) -> bytes | None:
    if len(block) < _BLOCK:
        return None
    _, mark, rest = block.partition(b"PNR=")
    number, end, _ = rest.partition(b"\0")
    return number if mark and end else None
