# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Headers as the daemon reads and builds them."""

import struct
from dataclasses import dataclass

SIZE = 20
PATTERN = 0xFF9AC381
DEVICE = 5
SERVICE = 4
VERSION = 1
REPLY_BIT = 0x8000
ONLY_TEXT = 1

SUCCESS = 1
FAILURE = 2
WRONG_VERSION = 3
WRONG_DEVICE = 4
WRONG_SERVICE = 5
UNKNOWN_COMMAND = 6

_LAYOUT = struct.Struct("<IBBBBHBBII")


@dataclass(frozen=True)
class Header:
    pattern: int
    version: int
    message_format: int
    device: int
    service: int
    command: int
    status: int
    command_version: int
    sequence: int
    payload_length: int

    @staticmethod
    def decode(data: bytes) -> "Header":
        return Header(*_LAYOUT.unpack(data[:SIZE]))

    @property
    def has_only_text(self) -> bool:
        return self.message_format & 31 == ONLY_TEXT


def reply(request: Header, status: int, text: bytes | None = None) -> bytes:
    """A whole answer: bare, or with a text and its NUL in the 8-bit section."""
    section = b"" if text is None else struct.pack("<I", len(text) + 1) + text + b"\0"
    fields = (
        PATTERN,
        VERSION,
        0 if text is None else ONLY_TEXT,
        DEVICE,
        SERVICE,
        request.command | REPLY_BIT,
        status,
        1,
        request.sequence,
        len(section),
    )
    return _LAYOUT.pack(*fields) + section
