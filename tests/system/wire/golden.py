# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""One exchange a command, byte for byte, with a card named "card1" as it comes from the factory.

Written by hand, never by a program that encodes: this is what the codecs are measured against. A line is a header
field group (pattern; version, format, device, service; command, status, command version; sequence; payload length),
a section's byte count, or text.
"""

from dataclasses import dataclass


@dataclass(frozen=True)
class Exchange:
    name: str
    request: bytes
    reply: bytes

    def __str__(self) -> str:
        return self.name


def _exchange(name: str, request: str, reply: str) -> Exchange:
    return Exchange(name, bytes.fromhex(request), bytes.fromhex(reply))


# The date and time in this reply is whatever the clock says; its 19 characters stand at this place.
TIME_GET_DATE = slice(24 + 73, 24 + 73 + 19)

VERSIONS = _exchange(
    "versions",
    """
    81 c3 9a ff  01 00 05 04  01 00 00 01  07 00 00 00  00 00 00 00
    """,
    """
    81 c3 9a ff  01 01 05 04  01 80 01 01  07 00 00 00  52 01 00 00
    4e 01 00 00
    3c 56 65 72 73 69 6f 6e 73 3e 0a
    09 3c 43 6f 6d 70 6f 6e 65 6e 74 20 49 64 3d 22 44 72 61 76 48 61 72 64 77 61 72 65 22
    20 56 65 72 73 69 6f 6e 3d 22 44 52 41 56 2d 32 30 30 31 2d 30 33 22 2f 3e 0a
    09 3c 43 6f 6d 70 6f 6e 65 6e 74 20 49 64 3d 22 56 65 6d 6b 48 61 72 64 77 61 72 65 22
    20 56 65 72 73 69 6f 6e 3d 22 56 45 4d 4b 2d 31 30 30 34 2d 30 37 22 2f 3e 0a
    09 3c 43 6f 6d 70 6f 6e 65 6e 74 20 49 64 3d 22 42 6f 6f 74 4c 6f 61 64 65 72 22
    20 56 65 72 73 69 6f 6e 3d 22 42 4f 4f 54 2d 33 2e 32 2e 31 22 2f 3e 0a
    09 3c 43 6f 6d 70 6f 6e 65 6e 74 20 49 64 3d 22 42 61 73 65 53 79 73 74 65 6d 22
    20 56 65 72 73 69 6f 6e 3d 22 42 41 53 45 2d 31 2e 34 2e 30 22 2f 3e 0a
    09 3c 43 6f 6d 70 6f 6e 65 6e 74 20 49 64 3d 22 61 70 70 6c 69 63 61 74 69 6f 6e 22
    20 56 65 72 73 69 6f 6e 3d 22 41 50 50 4c 2d 32 2e 35 2e 31 22 2f 3e 0a
    09 3c 43 6f 6d 70 6f 6e 65 6e 74 20 49 64 3d 22 6b 65 72 6e 65 6c 22
    20 56 65 72 73 69 6f 6e 3d 22 4b 45 52 4e 2d 36 2e 31 2e 30 22 2f 3e 0a
    3c 2f 56 65 72 73 69 6f 6e 73 3e 00
    """,
)

# The archive holds one file, pnr/kernel, with the line "KERN-7.0.0".
_ARCHIVE = """
    75 00 00 00
    1f 8b 08 00 00 00 00 00 02 03 ed cd 31 0a c2 40 14 04 d0 ad 3d 85 17 48 fc 21 8b 7b 02 2b c1 c2
    1b 58 a4 52 82 ac 7a 7f 97 34 82 bd 82 f8 5e 33 c3 34 73 9d eb e6 3c d5 79 ba a4 8f 89 66 9b f3
    92 cd 7b 46 0c e3 ab 2f 7b 29 79 48 eb 48 5f f0 b8 dd 4f b5 5d a6 ff b4 df 1d 0f 5d e9 a3 8f 55
    02 00 00 00 00 00 00 00 00 e0 77 3c 01 29 cf 89 00 00 28 00 00
    """

UPLOAD = _exchange(
    "firmware upload",
    """
    81 c3 9a ff  01 01 05 04  07 00 00 01  08 00 00 00  79 00 00 00
    """
    + _ARCHIVE,
    """
    81 c3 9a ff  01 00 05 04  07 80 01 01  08 00 00 00  00 00 00 00
    """,
)

UPGRADE = _exchange(
    "firmware upgrade",
    """
    81 c3 9a ff  01 01 05 04  08 00 00 01  09 00 00 00  79 00 00 00
    """
    + _ARCHIVE,
    """
    81 c3 9a ff  01 00 05 04  08 80 01 01  09 00 00 00  00 00 00 00
    """,
)

TIME_GET = _exchange(
    "time reference get",
    """
    81 c3 9a ff  01 00 05 04  10 00 00 01  0a 00 00 00  00 00 00 00
    """,
    """
    81 c3 9a ff  01 01 05 04  10 80 01 01  0a 00 00 00  64 00 00 00
    60 00 00 00
    3c 54 69 6d 65 52 65 66 65 72 65 6e 63 65 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e
    20 4d 6f 64 65 3d 22 4d 61 6e 75 61 6c 22
    20 4e 74 70 53 65 72 76 65 72 3d 22 31 30 2e 30 2e 30 2e 31 22
    20 44 61 74 65 54 69 6d 65 3d 22 32 30 32 31 2d 30 33 2d 30 34 54 30 35 3a 30 36 3a 30 37 22
    2f 3e 00
    """,
)

TIME_SET = _exchange(
    "time reference set",
    """
    81 c3 9a ff  01 01 05 04  11 00 00 01  0b 00 00 00  61 00 00 00
    5d 00 00 00
    3c 54 69 6d 65 52 65 66 65 72 65 6e 63 65 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e
    20 4d 6f 64 65 3d 22 4e 74 70 22
    20 4e 74 70 53 65 72 76 65 72 3d 22 31 30 2e 30 2e 30 2e 39 22
    20 44 61 74 65 54 69 6d 65 3d 22 32 30 32 31 2d 30 33 2d 30 34 54 30 35 3a 30 36 3a 30 37 22
    2f 3e 00
    """,
    """
    81 c3 9a ff  01 00 05 04  11 80 01 01  0b 00 00 00  00 00 00 00
    """,
)

IP_GET = _exchange(
    "IP configuration get",
    """
    81 c3 9a ff  01 01 05 04  03 00 00 01  78 56 34 12  2e 00 00 00
    2a 00 00 00
    3c 49 70 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e
    20 46 72 6f 6d 3d 22 6d 67 6d 74 22 20 54 6f 3d 22 63 61 72 64 31 22 2f 3e 00
    """,
    """
    81 c3 9a ff  01 01 05 04  03 80 01 01  78 56 34 12  eb 00 00 00
    e7 00 00 00
    3c 49 70 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e
    20 46 72 6f 6d 3d 22 63 61 72 64 31 22 20 54 6f 3d 22 6d 67 6d 74 22 3e
    3c 49 6e 74 65 72 66 61 63 65 20 4e 61 6d 65 3d 22 56 65 6d 6b 45 74 68 31 22
    20 4d 6f 64 65 3d 22 53 74 61 74 69 63 22
    20 41 64 64 72 65 73 73 3d 22 31 30 2e 30 2e 30 2e 31 31 22
    20 4e 65 74 6d 61 73 6b 3d 22 32 35 35 2e 32 35 35 2e 32 35 35 2e 30 22 2f 3e
    3c 49 6e 74 65 72 66 61 63 65 20 4e 61 6d 65 3d 22 56 65 6d 6b 45 74 68 32 22
    20 4d 6f 64 65 3d 22 53 74 61 74 69 63 22
    20 41 64 64 72 65 73 73 3d 22 31 30 2e 30 2e 31 2e 31 31 22
    20 4e 65 74 6d 61 73 6b 3d 22 32 35 35 2e 32 35 35 2e 32 35 35 2e 30 22 2f 3e
    3c 2f 49 70 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e 3e 00
    """,
)

IP_SET = _exchange(
    "IP configuration set",
    """
    81 c3 9a ff  01 01 05 04  04 00 00 01  0d 00 00 00  67 00 00 00
    63 00 00 00
    3c 49 70 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e
    20 46 72 6f 6d 3d 22 6d 67 6d 74 22 20 54 6f 3d 22 63 61 72 64 31 22 3e
    3c 49 6e 74 65 72 66 61 63 65 20 4e 61 6d 65 3d 22 56 65 6d 6b 45 74 68 31 22
    20 4d 6f 64 65 3d 22 44 68 63 70 22 2f 3e
    3c 2f 49 70 43 6f 6e 66 69 67 75 72 61 74 69 6f 6e 3e 00
    """,
    """
    81 c3 9a ff  01 00 05 04  04 80 01 01  0d 00 00 00  00 00 00 00
    """,
)

REBOOT = _exchange(
    "reboot",
    """
    81 c3 9a ff  01 01 05 04  09 00 00 01  ef be ad de  29 00 00 00
    25 00 00 00
    3c 52 65 62 6f 6f 74 43 61 72 64
    20 46 72 6f 6d 3d 22 6d 67 6d 74 22 20 54 6f 3d 22 63 61 72 64 31 22 2f 3e 00
    """,
    """
    81 c3 9a ff  01 00 05 04  09 80 01 01  ef be ad de  00 00 00 00
    """,
)

TCP = (VERSIONS, UPLOAD, UPGRADE, TIME_GET, TIME_SET)
UDP = (IP_GET, IP_SET, REBOOT)
EVERY = TCP + UDP
