# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How the twin's client talks to a card, and what counts as a difference."""

import socket
import struct
from concurrent.futures import ThreadPoolExecutor

import pytest
from model import Card, serve_connection
from model.settings import Settings
from twin.actions import Outcome
from twin.comparison import differences
from twin.conversation import converse
from wire import HEADER_SIZE, Status, reply_to, request

_PATIENCE = 15
_KNOWN = request(0x42)
_REFUSED = request(0x43, version=2)
_ANSWER = request(reply_to(0x42), status=Status.UNKNOWN_COMMAND)
_REFUSAL = request(reply_to(0x43), status=Status.WRONG_VERSION)


def _talk(sent: bytes) -> tuple[bytes, list[bytes]]:
    """The replies of a card that answers the first request, then refuses; and what there was to read each time."""
    client, card = socket.socketpair()
    for end in (client, card):
        end.settimeout(_PATIENCE)
    foreseen = serve_connection(Card("card1", Settings({}), {}), "10.0.0.1", 40000, sent)
    with client, card, ThreadPoolExecutor(1) as pool:
        replies = pool.submit(converse, client, sent, foreseen.last_words)
        waiting = []
        for answer in (_ANSWER, _REFUSAL):
            waiting.append(card.recv(65536, socket.MSG_PEEK))
            card.recv(HEADER_SIZE)
            card.sendall(answer)
        card.close()
        return replies.result(), waiting


def test_what_is_refused_is_sent_behind_the_answers_to_what_came_before() -> None:
    assert _talk(_KNOWN + _REFUSED + b"unread") == (_ANSWER + _REFUSAL, [_KNOWN, _REFUSED + b"unread"])


def test_connection_whose_bytes_are_all_read_is_sent_at_once() -> None:
    assert _talk(_KNOWN + _REFUSED) == (_ANSWER + _REFUSAL, [_KNOWN + _REFUSED, _REFUSED])


def test_card_that_answers_less_than_foreseen_is_told_by_what_it_answers() -> None:
    client, card = socket.socketpair()
    foreseen = serve_connection(Card("card1", Settings({}), {}), "10.0.0.1", 40000, _KNOWN + _REFUSED + b"unread")
    with client:
        card.sendall(_ANSWER[:3])
        card.close()
        assert converse(client, _KNOWN + _REFUSED + b"unread", foreseen.last_words) == _ANSWER[:3]


def test_card_that_has_closed_answers_nothing() -> None:
    with socket.create_server(("127.0.0.1", 0)) as server, socket.create_connection(server.getsockname()) as client:
        card, _ = server.accept()
        card.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        card.close()
        assert converse(client, _KNOWN, None) == b""


def _logged(line: str) -> Outcome:
    return Outcome([], [f"info {line}"], [])


@pytest.mark.parametrize("cut", ["x" * 1000, "x" * 999 + "\\xc3"])
def test_line_that_the_card_cuts_is_no_difference_where_it_may(cut: str) -> None:
    whole = _logged(cut[:999] + "\u00e4 and more" if "\\" in cut else cut + " and more")
    assert not differences(whole, _logged(cut), cut_lines=True)
    assert differences(whole, _logged(cut))


def test_newlines_at_the_end_of_a_line_are_no_difference() -> None:
    assert not differences(_logged("Unknown interface: \n"), _logged("Unknown interface: "))
    assert differences(_logged("Unknown interface: \nx"), _logged("Unknown interface: x"))


@pytest.mark.parametrize("other", ["x" * 800, "x" * 999 + "z"])
def test_line_that_is_not_cut_but_another_is_a_difference(other: str) -> None:
    assert differences(_logged("x" * 1200), _logged(other), cut_lines=True)
