# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The worked examples in docs/protocol.md are the golden exchanges, to the byte."""

import re
from pathlib import Path

import pytest

from wire import Header, Message, golden

PAGE = Path(__file__).resolve().parents[2] / "docs/protocol.md"

# A dump's line: up to 16 bytes, then blanks and a remark or the bytes as text.
_DUMP_LINE = re.compile(r" {4}((?:[0-9a-f]{2} ){0,15}[0-9a-f]{2})(?: {3,}.*)?")


def dumps() -> list[bytes]:
    """The bytes of each block of consecutive dump lines, in the order of the page."""
    found = [b""]
    for line in PAGE.read_text(encoding="utf-8").splitlines():
        match = _DUMP_LINE.fullmatch(line)
        if match:
            found[-1] += bytes.fromhex(match[1])
        elif found[-1]:
            found.append(b"")
    return [dump for dump in found if dump]


@pytest.mark.parametrize("exchange", golden.EVERY, ids=lambda exchange: exchange.name)
def test_the_page_shows_each_request_followed_by_its_reply(exchange: golden.Exchange) -> None:
    shown = dumps()
    request = shown.index(exchange.request)
    assert shown[request + 1] == exchange.reply


def test_every_dump_on_the_page_is_a_message_of_the_length_it_promises() -> None:
    for dump in dumps():
        assert len(Message.decode(dump).payload) == Header.decode(dump).payload_length


def test_the_page_shows_a_request_and_a_reply_for_each_command_and_an_unknown_one() -> None:
    assert len(dumps()) == 2 * (len(golden.EVERY) + 1)
