# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The client's side of a connection."""

import errno
import socket

from model.header import SIZE
from model.stream import LastWords

_PIECE = 65536
_CLOSED_ALREADY = (errno.EPIPE, errno.ECONNRESET, errno.ENOTCONN)


def converse(client: socket.socket, data: bytes, last_words: LastWords | None) -> bytes:
    """All replies. What the card refuses is sent when everything before it has been answered: a card that closes with
    bytes of the client's unread resets the connection, and replies that still wait for an acknowledgement are lost.
    """
    sent, answered = 0, b""
    if last_words is not None and last_words.heard < len(data):
        sent = last_words.heard - SIZE
        _send(client, data[:sent])
        answered = _receive(client, last_words.answered)
    _send(client, data[sent:], is_all=True)
    return answered + _receive(client)


def _send(client: socket.socket, data: bytes, is_all: bool = False) -> None:
    try:
        client.sendall(data)
        if is_all:
            client.shutdown(socket.SHUT_WR)
    except OSError as error:
        if error.errno not in _CLOSED_ALREADY:
            raise


def _receive(client: socket.socket, size: int | None = None) -> bytes:
    """So many bytes, or all; fewer if the card closes before."""
    data = b""
    try:
        while size is None or len(data) < size:
            piece = client.recv(_PIECE if size is None else size - len(data))
            if not piece:
                break
            data += piece
    except (ConnectionResetError, TimeoutError):
        pass  # closed with bytes unread, or nothing more comes, which is a difference
    return data
