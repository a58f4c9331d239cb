# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What replies tell differently from run to run."""

import re
from dataclasses import replace

from .header import HEADER_SIZE, Header
from .message import Message, text_payload

# Only in the form in which a card writes it, so that another form is still a difference.
_CHANGING = re.compile(r'(?<= DateTime=")\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d(?="/>$)')


def masked(replies: bytes) -> bytes:
    """One or more replies, with `*` for each such value and lengths to suit. What is no reply stays as it is."""
    whole = b""
    while len(replies) >= HEADER_SIZE:
        size = HEADER_SIZE + Header.decode(replies).payload_length
        whole += _masked_reply(replies[:size])
        replies = replies[size:]
    return whole + replies


def _masked_reply(data: bytes) -> bytes:
    message = Message.decode(data)
    try:
        text = message.text
    except ValueError:
        return data
    payload = text_payload(_CHANGING.sub("*", text))
    return Message(replace(message.header, payload_length=len(payload)), payload).encode()
