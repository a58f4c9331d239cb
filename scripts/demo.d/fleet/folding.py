# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What ansible-playbook prints, short enough for fifty hosts."""

import json
import re
from collections.abc import Iterable, Iterator

_HEADING = re.compile(r"(?:PLAY|TASK) \[.*\]")
_HOST = re.compile(r"(?P<outcome>ok|changed|fatal): \[(?P<host>[^\] ]+)[^\]]*\](?:.*?=> (?P<result>{.*))?")
_FEW = 6


def folded(lines: Iterable[str]) -> list[str]:
    """Its headings; below each what failed, and why, and the hosts that fared alike on a line. The recap has no more."""
    told: list[str] = []
    hosts: dict[str, list[str]] = {}
    for line in lines:
        if heading := _HEADING.match(line):
            told += [*_summed(hosts), heading[0]]
            hosts = {}
        elif host := _HOST.match(line):
            if host["outcome"] == "fatal":
                told.append(f"fatal: {_reason(host['host'], host['result'])}")
            else:
                hosts.setdefault(host["outcome"], []).append(host["host"])
    return [*told, *_summed(hosts)]


def _summed(hosts: dict[str, list[str]]) -> Iterator[str]:
    for outcome, names in sorted(hosts.items()):
        in_order = sorted(names, key=lambda name: (len(name), name))
        yield f"{outcome}: {', '.join(in_order)}" if len(names) <= _FEW else f"{outcome}: {len(names)} cards"


def _reason(host: str, result: str | None) -> str:
    message: str = json.loads(result or "{}").get("msg", "no reason told")
    return message if message.startswith(host) else f"{host}: {message}"
