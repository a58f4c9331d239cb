# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs Debian's Ansible with the collection, in folders of a test's own."""

import json
import os
import shlex
import subprocess
from collections.abc import Iterable, Mapping
from pathlib import Path
from typing import Any

from programs import ProgramError, program

ROOT = Path(__file__).resolve().parents[2]
COLLECTIONS = ROOT / "packaging/ansible"
COLLECTION = COLLECTIONS / "ansible_collections/tarvel/cards"
INTERPRETER = "/usr/bin/python3"
CLIENT = (Path(os.environ["TARVELD"].split()[-1]).parent / "tarvelctl").resolve()


class Played(dict[tuple[str, str], dict[str, Any]]):
    """What became of each task, by its name and the host: the result of the module, and the `outcome` of the task."""

    def __init__(self, lines: Iterable[str], said: str) -> None:
        self.said = said  # by Ansible itself
        for line in lines:
            played = json.loads(line)
            self[played["task"], played["host"]] = {**played["result"], "outcome": played["outcome"]}

    def of(self, task: str) -> dict[str, Any]:
        """Of the play for this machine alone."""
        return self[task, "localhost"]

    def hosts(self, task: str) -> set[str]:
        return {host for name, host in self if name == task}


class Ansible:
    """The programs, and the folder that they and the client may write into."""

    def __init__(self, folder: Path) -> None:
        self.folder = folder
        self.groups = folder / "groups"
        self.record = folder / "record"
        kept = {name: value for name, value in os.environ.items() if not name.startswith(("ANSIBLE_", "XDG_", "LC_"))}
        self.environment = {
            **kept,
            "ANSIBLE_CALLBACKS_ENABLED": "record",
            "ANSIBLE_CALLBACK_PLUGINS": str(Path(__file__).parent / "callbacks"),
            "ANSIBLE_COLLECTIONS_PATH": str(COLLECTIONS),
            "ANSIBLE_HOME": str(folder / "ansible"),
            "ANSIBLE_INVENTORY_ANY_UNPARSED_IS_FAILED": "1",
            "ANSIBLE_LOCAL_TEMP": str(folder / "ansible/tmp"),
            "ANSIBLE_NOCOLOR": "1",
            "ANSIBLE_PIPELINING": "1",  # half as many processes
            "ANSIBLE_PYTHON_INTERPRETER": INTERPRETER,
            "ANSIBLE_REMOTE_TEMP": str(folder / "ansible/remote"),
            "HOME": str(folder),
            "LC_ALL": "C.UTF-8",
            "PATH": f"{CLIENT.parent}:{os.environ['PATH']}",
            "PYTHONDONTWRITEBYTECODE": "1",
            "RECORD_TO": str(self.record),
            "XDG_CONFIG_HOME": str(folder / "config"),
            "XDG_STATE_HOME": str(folder / "state"),
        }

    def run(
        self, *command: str, code: int = 0, cwd: Path | None = None, extra: Mapping[str, str] | None = None
    ) -> str:
        """What the program prints; its standard error is only shown where it ends with another status."""
        ended = subprocess.run(
            [program(command[0]), *command[1:]],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            env={**self.environment, **(extra or {})},
            cwd=cwd or self.folder,
            check=False,
        )
        if ended.returncode != code:
            told = f"{ended.stdout}{ended.stderr}"
            raise ProgramError(f"{shlex.join(command)} ended with {ended.returncode} instead of {code}: {told}")
        return ended.stdout if code == 0 else ended.stdout + ended.stderr

    def play(self, tasks: Iterable[Mapping[str, Any]]) -> Played:
        """Plays the tasks for this machine alone; failures of theirs end nothing."""
        play = {"hosts": "localhost", "gather_facts": False, "ignore_errors": True, "tasks": list(tasks)}
        playbook = self.folder / "playbook.yml"
        playbook.write_text(json.dumps([play]), encoding="utf-8")
        return self.playbook(str(playbook), "-i", "localhost,", "-c", "local")

    def playbook(self, *words: str, code: int = 0) -> Played:
        self.record.unlink(missing_ok=True)
        said = self.run("ansible-playbook", *words, code=code)
        return Played(self.record.read_text(encoding="utf-8").splitlines(), said)


def task(name: str, module: str, /, **options: Any) -> dict[str, Any]:
    """One of a playbook, with a diff, for `card1` if no card is told."""
    return {"name": name, f"tarvel.cards.{module}": {"card": "card1", **options}, "diff": True}


def checked(name: str, module: str, /, **options: Any) -> dict[str, Any]:
    """The same in check mode."""
    return {**task(f"{name} checked", module, **options), "check_mode": True}


def each_way(name: str, module: str, /, **options: Any) -> list[dict[str, Any]]:
    """In check mode and for real, and both once more."""
    return [
        checked(name, module, **options),
        task(f"{name} done", module, **options),
        task(f"{name} again", module, **options),
        checked(f"{name} again", module, **options),
    ]
