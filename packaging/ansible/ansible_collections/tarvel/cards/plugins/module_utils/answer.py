# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What tarvelctl is told and what it answers, without Ansible."""

from __future__ import annotations

import json
import re
from collections.abc import Mapping
from typing import Any

SCHEMA = 2
TIMEOUT = 5  # the exit status of silence

# What the exit statuses mean; the answer itself tells more.
MEANINGS = {
    1: "internal error",
    2: "wrong use, or a change that needs more to be allowed",
    3: "refused by the card",
    4: "the answer makes no sense",
    5: "no answer in time",
    6: "no connection",
    7: "verification failed",
    8: "different outcomes",
    9: "a difference was found",
    10: "a local file is missing or bad",
    11: "another card could be meant",
    130: "interrupted",
}


class ClientError(Exception):
    """A failure in one sentence, and what else is known of it."""

    def __init__(self, message: str, code: int, stderr: str, result: dict[str, Any] | None = None) -> None:
        super().__init__(message)
        self.code = code
        self.stderr = stderr
        self.result = result or {}


def meaning(code: int) -> str:
    return MEANINGS.get(code, "unknown")


def read_results(code: int, out: str, err: str) -> list[dict[str, Any]]:
    """The results that were printed, none of which is a failure."""
    results: list[dict[str, Any]] = _document(code, out, err)["results"]
    for result in results:
        if not result["ok"]:
            raise ClientError(failure(result), result["code"], err, result)
    return results


def _document(code: int, out: str, err: str) -> dict[str, Any]:
    try:
        document: Any = json.loads(out)
    except ValueError:
        text = (out + err).strip() or "nothing"
        message = f"tarvelctl ended with {code} ({meaning(code)}) and printed no JSON, but: {text}"
        raise ClientError(message, code, err) from None
    schema = document.get("schema") if isinstance(document, dict) else None
    if schema != SCHEMA:
        raise ClientError(f"tarvelctl answers in schema {schema}, and this collection reads {SCHEMA}", code, err)
    return dict(document)


def failure(result: Mapping[str, Any]) -> str:
    """In tarvelctl's own words."""
    code = result["code"]
    words = f"{result['category']} while {result['phase']} (exit status {code}, {meaning(code)}): {result['hint']}"
    return words if result["target"] is None else f"{result['target']}: {words}"


def warnings(err: str) -> list[str]:
    """Those of what was printed on standard error."""
    return re.findall(r"^warning: (.+)$", err, re.MULTILINE)


def one_card(target: str) -> str:
    """The target, if it cannot mean several cards, nor be read as an option."""
    if not target or re.search(r"[\[\],/\s]|^[@-]", target):
        raise ValueError(f'card: "{target}" is not the name or the address of one card')
    return target


def versions_file(expect: Mapping[Any, Any]) -> str:
    """The components and their versions as tarvelctl reads them."""
    for component, version in expect.items():
        if not isinstance(version, str):
            raise ValueError(f"expect: the version of {component} is no text: write it in quotes")
        if not version.strip() or re.search(r"[#\r\n]", version):
            raise ValueError(f'expect: "{version}" of {component} is no version')
    return "".join(f"{component} {version}\n" for component, version in expect.items())


def versions_of(result: Mapping[str, Any]) -> dict[str, str]:
    return {row["component"]: row["version"] for row in result["components"]}


def diff_text(state: Mapping[str, Any]) -> str:
    return json.dumps(state, indent=2, sort_keys=True) + "\n"
