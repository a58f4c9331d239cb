# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the daemon waits for, and its end: the only ways to it are a wait and a connection that fail."""

from .card import Card


class Ended(Exception):
    """The loop has; what is left is the shutdown."""


def wait(card: Card) -> None:
    if card.refuses("select"):
        card.warning(f"select() failed: {card.why}")
        raise Ended


def accept(card: Card) -> None:
    if card.refuses("accept"):
        card.warning(f"accept() failed: {card.why}")
        raise Ended


def end(card: Card, sockets: int) -> None:
    """With so many that are closed."""
    for _ in range(sockets):
        card.info("Socket (N) successfully closed")
    card.error("tarvel-daemon terminated unexpectedly!")
    card.has_ended = True


def wait_for_the_next(card: Card) -> None:
    """While no connection is open."""
    try:
        wait(card)
    except Ended:
        end(card, sockets=3)
