# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The message protocol, written a second time.

Shares nothing with the daemon and nothing with the client, so that a mistake in their common code cannot agree with
itself. It has no rules: a test may build any message, also an impossible one.
"""

from .header import HEADER_SIZE, START_PATTERN, Header
from .masking import masked
from .message import Message, request, text_payload
from .numbers import Command, Format, Status, reply_to
from .sections import Sections

__all__ = [
    "HEADER_SIZE",
    "START_PATTERN",
    "Command",
    "Format",
    "Header",
    "Message",
    "Sections",
    "Status",
    "masked",
    "reply_to",
    "request",
    "text_payload",
]
