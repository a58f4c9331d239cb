# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which cards there are: those that were asked for, in their groups, and what was heard of them."""

from __future__ import annotations

import ipaddress
import re
from collections.abc import Iterable, Mapping
from typing import Any


def of_file(text: str) -> tuple[list[str], dict[str, str]]:
    """The groups of a groups file, and its names with their addresses; tarvelctl itself knows who is in a group."""
    groups: list[str] = []
    addresses: dict[str, str] = {}
    for line in text.splitlines():
        words = line.partition("#")[0].split()
        if words and words[0].startswith("@"):
            groups.append(words[0][1:])
        elif len(words) == 2:
            addresses[words[0]] = words[1]
    return list(dict.fromkeys(groups)), addresses


def is_address(target: str) -> bool:
    try:
        ipaddress.IPv4Address(target.partition(":")[0])
    except ValueError:
        return False
    return True


def escaped(name: str) -> str:
    """The name as a target that means it and nothing else."""
    return re.sub(r"([\[\],\\])", r"\\\1", name)


class Cards:
    """Hosts with their variables, and groups of them."""

    def __init__(
        self, hosts: dict[str, dict[str, Any]] | None = None, groups: dict[str, list[str]] | None = None
    ) -> None:
        self.hosts = {} if hosts is None else hosts
        self.groups = {} if groups is None else groups

    def add(self, targets: Iterable[str], addresses: Mapping[str, str]) -> None:
        for target in targets:
            known = target if is_address(target) else addresses.get(target)
            self.hosts.setdefault(target, _unheard(target, known))

    def names(self) -> list[str]:
        """Whom to ask for."""
        return [escaped(host) for host in self.hosts if not is_address(host)]

    def hear(self, results: Iterable[Mapping[str, Any]], unnamed: bool) -> None:
        """The first answer of a card counts, as long as tarvelctl warns of no second card."""
        for result in results:
            host = result["name"] or result["target"]
            if host not in self.hosts and not unnamed:
                continue
            card = self.hosts.setdefault(host, _unheard(host, None))
            if not card["tarvel_heard"]:
                heard = {"address": result["target"], "interface": result["interface"], "reachable": result["reachable"]}
                card.update({f"tarvel_{name}": value for name, value in heard.items()}, tarvel_heard=True)


def _unheard(host: str, address: str | None) -> dict[str, Any]:
    name = None if is_address(host) else host
    known = {"name": name, "address": address, "interface": None, "reachable": None, "heard": False}
    return {f"tarvel_{variable}": value for variable, value in known.items()}
