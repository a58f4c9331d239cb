# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The worked examples in docs/protocol.md, which are the golden exchanges."""

import re

from wire import Command, Header, Message, golden

PAGE = golden.PAGE.read_text(encoding="utf-8")

# The columns of a dump that shows its bytes as text, too.
_AS_TEXT = re.compile(r"^ {4}([0-9a-f ]{47}) {3}(.+)$", re.MULTILINE)


def test_each_command_of_the_table_has_its_example_and_no_other() -> None:
    assert list(golden.read_transports(PAGE)) == list(golden.read_exchanges(PAGE))


def test_each_example_is_that_of_the_command_in_its_heading() -> None:
    shown = golden.read_exchanges(PAGE)
    assert list(shown) == [Header.decode(exchange.request).command for exchange in shown.values()]


def test_each_number_that_tests_use_has_its_example() -> None:
    assert set(Command) <= set(golden.read_exchanges(PAGE))


def test_every_dump_on_the_page_is_a_message_of_the_length_it_promises() -> None:
    for dump in golden.dumps(PAGE):
        assert len(Message.decode(dump).payload) == Header.decode(dump).payload_length


def test_the_page_shows_a_request_and_a_reply_for_each_command_and_an_unknown_one() -> None:
    assert len(golden.dumps(PAGE)) == 2 * (len(golden.EVERY) + 1)


def test_text_beside_the_bytes_is_what_they_say() -> None:
    rows = list(_AS_TEXT.finditer(PAGE))
    assert rows
    for row in rows:
        data = bytes.fromhex(row[1])
        text = "".join(chr(byte) if 0x20 <= byte < 0x7F else "." for byte in data)
        assert row[2] == text.rstrip()
