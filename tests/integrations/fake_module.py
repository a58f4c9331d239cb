# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A module as Ansible would make it, and a client that answers what a test likes."""

import json
from typing import Any

import pytest
from ansible_collections.tarvel.cards.plugins.module_utils.client import work_on

GOOD: dict[str, Any] = {
    "target": "card1",
    "ok": True,
    "code": 0,
    "category": None,
    "phase": None,
    "hint": None,
    "changed": False,
}
BAD = {**GOOD, "ok": False, "code": 7, "category": "unchanged", "phase": "comparing", "hint": "it is as before"}
COMMON: dict[str, Any] = {"card": "card1", "executable": "tarvelctl", "groups_file": None, "interfaces": [], "timeout": None}
CHANGING = {"retries": None, "force": False, "trust_groups": False, "probe": True}


class Ended(Exception):
    """A module ends its process."""


class FakeModule:
    """A client that answers with these documents, one after the other."""

    def __init__(self, params: dict[str, Any], *answers: dict[str, Any], check: bool = False, diff: bool = False) -> None:
        self.params = {**COMMON, **CHANGING, **params}
        self.check_mode, self._diff = check, diff
        self.answers = list(answers)
        self.commands: list[list[str]] = []
        self.inputs: list[str | None] = []
        self.end: dict[str, Any] = {}
        self.warnings: list[str] = []

    def get_bin_path(self, name: str, required: bool) -> str:
        return name

    def run_command(self, command: list[str], data: str | None, environ_update: dict[str, str]) -> tuple[int, str, str]:
        assert environ_update == {"LC_ALL": "C"}
        self.commands.append(command)
        self.inputs.append(data)
        result = self.answers.pop(0)
        document = {"schema": 2, "command": "", "ok": result["ok"], "code": result["code"], "results": [result]}
        return result["code"], json.dumps(document), "note\nwarning: card1: mind the gap\n"

    def warn(self, text: str) -> None:
        self.warnings.append(text)

    def exit_json(self, **end: Any) -> None:
        self.end = {"failed": False, **end}
        raise Ended

    def fail_json(self, **end: Any) -> None:
        self.end = {"failed": True, **end}
        raise Ended


def ended(module: FakeModule, work: Any) -> dict[str, Any]:
    with pytest.raises(Ended):
        work_on(module, work)
    return module.end
