# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The numbers of the protocol."""

from enum import IntEnum, IntFlag

PORT = 50003
DEVICE = 5
SERVICE = 4
VERSION = 1
REPLY_FLAG = 0x8000


class Command(IntEnum):
    """Those that tests call by a name."""

    VERSIONS = 1
    IP_GET = 3
    IP_SET = 4
    UPLOAD = 7
    UPGRADE = 8
    REBOOT = 9
    TIME_GET = 16
    TIME_SET = 17


class Status(IntEnum):
    REQUEST = 0
    SUCCESS = 1
    FAILURE = 2
    WRONG_VERSION = 3
    WRONG_DEVICE = 4
    WRONG_SERVICE = 5
    UNKNOWN_COMMAND = 6


class Format(IntFlag):
    NONE = 0
    SECTION_8 = 0x01
    SECTION_16 = 0x02
    SECTION_32 = 0x04
    SECTION_64 = 0x08
    RESERVED_SECTION = 0x10
    RAW = 0x80


def reply_to(command: int) -> int:
    """The identifier that the reply to a command carries."""
    return command & 0x7FFF | REPLY_FLAG
