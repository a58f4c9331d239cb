# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Settings as the daemon asks for them: one shell command each."""

from . import platform
from .card import Card

_RESULT_FILE = "/tmp/uci.tmp"


def get(card: Card, key: str) -> str | None:
    if platform.run(card, f"uci -q get {key} > {_RESULT_FILE}") != 0:
        return None
    line = card.first_line(_RESULT_FILE)
    return None if line is None else line.decode("utf-8", "surrogateescape")


def put(card: Card, key: str, value: str) -> bool:
    return platform.run(card, f"uci -q set {key}={value}") == 0


def delete(card: Card, key: str) -> None:
    platform.run(card, f"uci -q delete {key}")


def changes(card: Card) -> None:
    platform.run(card, "uci -q changes ")


def commit(card: Card) -> bool:
    return platform.run(card, "uci -q commit ") == 0


def revert(card: Card, configuration: str) -> None:
    platform.run(card, f"uci -q revert {configuration}")
