# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Both directions of a connection."""

from dataclasses import dataclass

from . import header
from .card import Card


@dataclass(frozen=True)
class LastWords:
    """Where a connection ends that the card closes first."""

    heard: int  # bytes of the client's, with all of the header that is refused
    answered: int  # bytes of the replies to everything before that header


class Stream:
    def __init__(self, card: Card, sent: bytes) -> None:
        self._card = card
        self._sent = len(sent)
        self._rest = sent
        self.answered = b""
        self.last_words: LastWords | None = None

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

    def refuse(self, request: header.Header, status: int) -> None:
        """The last answer; what else the client has sent is never read."""
        self.last_words = LastWords(self._sent - len(self._rest), len(self.answered))
        self.answer(header.reply(request, status))

    def fail(self, request: header.Header) -> None:
        self.answer(header.reply(request, header.FAILURE))
