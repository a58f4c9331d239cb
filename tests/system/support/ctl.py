# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs the client as a script would, and takes its answer apart."""

import csv
import io
import json
import os
import signal
import subprocess
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from tarvelsim.waiting import wait_for

SCHEMA = 2


@dataclass(frozen=True)
class Answer:
    code: int
    out: str
    err: str

    @property
    def document(self) -> dict[str, Any]:
        """The JSON of -o json, with what holds for every such document checked."""
        document: dict[str, Any] = json.loads(self.out)
        assert document["schema"] == SCHEMA
        assert document["code"] == self.code
        assert document["ok"] == (self.code == 0)
        return document

    @property
    def results(self) -> list[dict[str, Any]]:
        results: list[dict[str, Any]] = self.document["results"]
        return results

    @property
    def result(self) -> dict[str, Any]:
        (only,) = self.results
        return only

    @property
    def rows(self) -> list[dict[str, str]]:
        """The lines of -o csv by their heading."""
        return list(csv.DictReader(io.StringIO(self.out)))


class Ctl:
    """The program, with configuration and state folders of its own."""

    def __init__(self, program: Path, folder: Path) -> None:
        self.program = program
        self.config = folder / "config" / "tarvelctl"
        self.config.mkdir(parents=True)
        self.state = folder / "state" / "tarvelctl"
        self.environment = {
            **os.environ,
            "HOME": str(folder),
            "XDG_CONFIG_HOME": str(folder / "config"),
            "XDG_STATE_HOME": str(folder / "state"),
        }

    def __call__(self, *words: str, input: str = "", timeout: float = 60) -> Answer:
        ended = subprocess.run(
            [str(self.program), *words],
            input=input,
            capture_output=True,
            text=True,
            errors="surrogateescape",
            env=self.environment,
            timeout=timeout,
            check=False,
        )
        return Answer(ended.returncode, ended.stdout, ended.stderr)

    def remember(self, name: str, text: str) -> None:
        """As if an earlier run had written this."""
        self.state.mkdir(parents=True, exist_ok=True)
        (self.state / name).write_text(text)

    def json(self, *words: str, input: str = "") -> Answer:
        return self("-o", "json", *words, input=input)

    def json_checked(self, *words: str) -> Answer:
        """The address of each card that was changed is one that was checked. On a busy machine a card may answer the
        probe too late: then it is changed once more."""

        def answer() -> Answer | None:
            ended = self.json(*words)
            return ended if all(result["checked"] for result in ended.results if result["ok"]) else None

        return wait_for(answer, 300, lambda: "no answer to a probe is seen")

    def isolated(self, *words: str) -> Answer:
        """In a network of its own, where there is the loopback device alone, and nobody on it."""
        network = ["unshare", "--net", "sh", "-c", 'ip link set lo up && exec "$@"', "sh"]
        words = (*network, str(self.program), "-o", "json", *words)
        ended = subprocess.run(words, capture_output=True, text=True, env=self.environment, timeout=60, check=False)
        return Answer(ended.returncode, ended.stdout, ended.stderr)

    def start(self, *words: str) -> subprocess.Popen[str]:
        """Lets it run; the test ends it."""
        return subprocess.Popen(
            [str(self.program), *words],
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            text=True,
            env=self.environment,
        )


def interrupt(running: subprocess.Popen[str]) -> Answer:
    """Ctrl-C, and what it leads to."""
    running.send_signal(signal.SIGINT)
    out, err = running.communicate(timeout=30)
    return Answer(running.returncode, out, err)
