# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Both directions of a connection."""

from . import header
from .card import Card


class Stream:
    def __init__(self, card: Card, sent: bytes) -> None:
        self._card = card
        self._rest = sent
        self.answered = b""

    def receive(self, size: int) -> bytes | None:
        """Exactly so many bytes; None if the client has ended before, or if none are asked for."""
        if size < 1:
            return None
        data, self._rest = self._rest[:size], self._rest[size:]
        if len(data) == size:
            return data
        self._card.info("Client closed the connection")
        return None

    def answer(self, data: bytes) -> None:
        self.answered += data

    def fail(self, request: header.Header) -> None:
        self.answer(header.reply(request, header.FAILURE))
