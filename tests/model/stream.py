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
        self.is_broken = False  # the last time that something was received

    def receive(self, size: int) -> bytes | None:
        """Exactly so many bytes; None if the client has ended before, or if none are asked for."""
        if size < 1:
            return None
        self.is_broken = self._card.refuses("recv")
        if self.is_broken:
            self._card.warning(f"recv() failed: {self._card.why}")
            return None
        data, self._rest = self._rest[:size], self._rest[size:]
        if len(data) == size:
            return data
        self._card.info("Client closed the connection")
        return None

    def answer(self, data: bytes) -> None:
        """In up to three writes: header, length and text. Nobody looks at what became of them."""
        for piece in (data[: header.SIZE], data[header.SIZE : header.SIZE + 4], data[header.SIZE + 4 :]):
            if piece and self._card.refuses("send"):
                self._card.warning(f"send() failed: {self._card.why}")
            else:
                self.answered += piece

    def refuse(self, request: header.Header, status: int) -> None:
        """The last answer; what else the client has sent is never read."""
        self.last_words = LastWords(self._sent - len(self._rest), len(self.answered))
        self.answer(header.reply(request, status))

    def fail(self, request: header.Header) -> None:
        self.answer(header.reply(request, header.FAILURE))
