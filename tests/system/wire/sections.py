# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A payload: up to four sections, each a byte count followed by its elements."""

import struct
from dataclasses import dataclass

from .numbers import Format

_COUNT = struct.Struct("<I")
# In the order in which they travel: format bit, element size, struct letter.
_KINDS = ((Format.SECTION_64, 8, "Q"), (Format.SECTION_32, 4, "I"), (Format.SECTION_16, 2, "H"))


class BadPayload(ValueError):
    """The bytes are not what the format bits promise."""


@dataclass(frozen=True)
class Sections:
    """The sections of a payload; None means that a section is absent, which is not the same as empty."""

    words64: tuple[int, ...] | None = None
    words32: tuple[int, ...] | None = None
    words16: tuple[int, ...] | None = None
    data: bytes | None = None

    @property
    def message_format(self) -> int:
        bits = Format.NONE if self.data is None else Format.SECTION_8
        for (bit, _, _), words in zip(_KINDS, self._words(), strict=True):
            bits |= Format.NONE if words is None else bit
        return int(bits)

    def encode(self) -> bytes:
        payload = b""
        for (_, size, letter), words in zip(_KINDS, self._words(), strict=True):
            if words is not None:
                payload += _COUNT.pack(size * len(words)) + struct.pack(f"<{len(words)}{letter}", *words)
        if self.data is not None:
            payload += _COUNT.pack(len(self.data)) + self.data
        return payload

    @staticmethod
    def decode(message_format: int, payload: bytes) -> "Sections":
        words: list[tuple[int, ...] | None] = []
        rest = payload
        for bit, size, letter in _KINDS:
            if message_format & bit:
                data, rest = _take(rest)
                words.append(struct.unpack(f"<{len(data) // size}{letter}", data))
            else:
                words.append(None)
        last = None
        if message_format & Format.SECTION_8:
            last, rest = _take(rest)
        if rest:
            raise BadPayload(f"{len(rest)} bytes after the last section")
        return Sections(words[0], words[1], words[2], last)

    def _words(self) -> tuple[tuple[int, ...] | None, ...]:
        return self.words64, self.words32, self.words16


def _take(rest: bytes) -> tuple[bytes, bytes]:
    """The bytes of the section at the start, and what follows it."""
    if len(rest) < _COUNT.size:
        raise BadPayload("no room for a byte count")
    (count,) = _COUNT.unpack_from(rest)
    start, end = _COUNT.size, _COUNT.size + count
    if end > len(rest):
        raise BadPayload(f"a section of {count} bytes in {len(rest) - start}")
    return rest[start:end], rest[end:]
