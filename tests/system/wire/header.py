# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The 20 bytes in front of every message."""

import struct
from dataclasses import dataclass

from .numbers import DEVICE, SERVICE, VERSION

START_PATTERN = 0xFF9AC381
HEADER_SIZE = 20

# Little-endian, without padding: u32, four u8, u16, two u8, two u32.
_LAYOUT = struct.Struct("<IBBBBHBBII")


@dataclass(frozen=True)
class Header:
    """The fields in the order in which they travel; the defaults are those of a request without payload."""

    start_pattern: int = START_PATTERN
    version: int = VERSION
    message_format: int = 0
    device: int = DEVICE
    service: int = SERVICE
    command: int = 0
    status: int = 0
    command_version: int = 1
    sequence: int = 0
    payload_length: int = 0

    def encode(self) -> bytes:
        return _LAYOUT.pack(
            self.start_pattern,
            self.version,
            self.message_format,
            self.device,
            self.service,
            self.command,
            self.status,
            self.command_version,
            self.sequence,
            self.payload_length,
        )

    @staticmethod
    def decode(data: bytes) -> "Header":
        """Reads the first 20 bytes; raises struct.error if there are fewer."""
        return Header(*_LAYOUT.unpack_from(data))
