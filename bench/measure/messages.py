# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What is asked, byte for byte."""

import paths  # noqa: F401
from card import NAME
from support.documents import ip_configuration
from wire import Command, Header, request

UNKNOWN = request(0x42)
VERSIONS = request(Command.VERSIONS)
TIME_GET = request(Command.TIME_GET)
IP_GET = request(Command.IP_GET, ip_configuration(to=NAME, sender="bench"))
OTHER_NAME = request(Command.IP_GET, ip_configuration(to="card9", sender="bench"))
OTHER_DEVICE = request(Command.IP_GET, ip_configuration(to=NAME, sender="bench"), device=7)


def upload_of(size: int) -> bytes:
    """What stands in front of an archive of so many bytes."""
    return Header(command=Command.UPLOAD, message_format=1, payload_length=size + 4).encode() + size.to_bytes(4, "little")
