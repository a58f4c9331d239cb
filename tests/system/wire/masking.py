# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What replies tell differently from run to run, as the worked examples of docs/protocol.md say and show."""

import re
from dataclasses import replace

from . import golden
from .header import HEADER_SIZE, Header
from .message import Message, text_payload
from .numbers import reply_to


def changing_value(attribute: str, text: str) -> re.Pattern[str]:
    """The attribute's value, only in the form which it has in the text, so that another form is still a difference."""
    (example,) = re.findall(rf'(?<= {attribute}=")[^"]*(?=")', text)
    form = re.sub(r"\d", r"\\d", re.escape(example))
    if re.fullmatch(r"\d+(\.\d+)?", example):  # a number, of any length before its point
        form = re.sub(r"^(\\d)+", r"\\d+", form)
    return re.compile(rf'(?<= {attribute}="){form}(?=")')


_CHANGING = {
    reply_to(number): [changing_value(attribute, Message.decode(exchange.reply).text) for attribute in exchange.changing]
    for number, exchange in golden.BY_NUMBER.items()
    if exchange.changing
}


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
    for value in _CHANGING.get(message.header.command, []):
        text = value.sub("*", text)
    payload = text_payload(text)
    return Message(replace(message.header, payload_length=len(payload)), payload).encode()
