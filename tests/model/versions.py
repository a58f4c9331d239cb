# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Command 1: the components of the card."""

from . import header
from .card import DRAV_FILE, FLASH_DEVICE, PART_NUMBERS, VEMK_FILE, Card
from .header import Header
from .stream import Stream

_BASE_SYSTEM = "squashfs"
_LONGEST = 2047
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
        ("BaseSystem", card.first_line(PART_NUMBERS + _BASE_SYSTEM)),
    ]
    names = (path.removeprefix(PART_NUMBERS) for path in card.files if path.startswith(PART_NUMBERS))
    for name in sorted(names, key=lambda name: name.encode()):
        if name != _BASE_SYSTEM:
            components.append((name, card.first_line(PART_NUMBERS + name)))
    return [(name, version) for name, version in components if version is not None]


def _boot_loader(card: Card) -> bytes | None:
    block = card.files.get(FLASH_DEVICE, b"")[:1024]
    if len(block) < 1024:
        return None
    _, mark, rest = block.partition(b"PNR=")
    number, end, _ = rest.partition(b"\0")
    return number if mark and end else None
