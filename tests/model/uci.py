# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Settings as the daemon asks for them: one shell command each."""

from . import platform
from .card import Card

_RESULT_FILE = "/tmp/uci.tmp"


def get(card: Card, key: str) -> str | None:
    if _execute(card, f"get {key} > {_RESULT_FILE}") != 0:
        return None
    line = card.first_line(_RESULT_FILE)
    return None if line is None else line.decode("utf-8", "surrogateescape")


def put(card: Card, key: str, value: str) -> bool:
    return _execute(card, f"set {key}={value}") == 0


def delete(card: Card, key: str) -> None:
    _execute(card, f"delete {key}")


def changes(card: Card) -> None:
    _execute(card, "changes ")


def commit(card: Card) -> bool:
    return _execute(card, "commit ") == 0


def revert(card: Card, configuration: str) -> None:
    _execute(card, f"revert {configuration}")


def _execute(card: Card, arguments: str) -> int:
    status = platform.run(card, f"uci -q {arguments}")
    if status == -1:
        card.console.append(f"system() FAILED: {card.why}")
    return status
