# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The packaged rules of a firewall, loaded as OpenWrt's firewall does: inside of its table."""

import json
import re
import subprocess
from collections.abc import Callable

from tarvelsim import Card

from .daemon import ROOT

LIMITS = "tarveld.nft"
CONNECTIONS = "tarveld.connections.nft"
MANAGEMENT = "tarveld.management.nft"
_FILES = ROOT / "packaging/openwrt/files"
_TABLE = "inet fw4"

Run = Callable[[list[str], str], str]


def _run_here(command: list[str], given: str) -> str:
    return subprocess.run(command, input=given, stdout=subprocess.PIPE, text=True, check=True).stdout


def _run_on(card: Card) -> Run:
    def run(command: list[str], given: str) -> str:
        output: str = card.inside.run(command, input=given).stdout
        return output

    return run


def packaged(name: str) -> str:
    return (_FILES / name).read_text(encoding="utf-8")


def without_refill(rules: str) -> str:
    """The same limits, of which nothing is given back during a test, however slow it is: only the bursts are left."""
    changed, count = re.subn(r"\blimit rate over \d+/second\b", "limit rate over 1/week", rules)
    assert count > 0
    return changed


class Firewall:
    """On the clients' side of the LAN, or on a card."""

    def __init__(self, card: Card | None = None) -> None:
        self._run = _run_on(card) if card else _run_here

    def load(self, *rules: str) -> None:
        """Also in place of what is loaded, like a reload."""
        text = "\n".join(rules)
        self._run(["nft", "-f", "-"], f"table {_TABLE}\nflush table {_TABLE}\ntable {_TABLE} {{\n{text}\n}}\n")

    def unload(self) -> None:
        self._run(["nft", "-f", "-"], f"table {_TABLE}\ndelete table {_TABLE}\n")

    def dropped(self) -> dict[str, int]:
        """How many packets each rule has dropped so far."""
        listed = json.loads(self._run(["nft", "-j", "list", "table", *_TABLE.split()], ""))["nftables"]
        rules = [entry["rule"] for entry in listed if "rule" in entry]
        return {
            rule["comment"].removeprefix("tarveld: "): expression["counter"]["packets"]
            for rule in rules
            for expression in rule["expr"]
            if "counter" in expression
        }
