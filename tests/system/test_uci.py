# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card's uci answers as the real one does: uci/README.md tells how its answers are written down."""

import re
import shlex
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

import pytest
from tarvelsim import Lan, binaries

SESSIONS = sorted((Path(__file__).parent / "uci").glob("*.t"))
HEADING = re.compile(r"# (?P<title>.+) \((measured|source|ours)\)")
UCI = '#!/bin/sh\nexec {program} -c {directory}/config -t {directory}/staged "$@"\n'


@dataclass
class Command:
    text: str
    output: list[str] = field(default_factory=list)
    errors: list[str] = field(default_factory=list)
    status: int = 0

    def take(self, line: str) -> None:
        """One more line of the answer."""
        if line.startswith("|"):
            self.output.append(line[2:])
        elif line.startswith("!"):
            self.errors.append(line[2:])
        else:
            self.status = int(line.strip("[]"))


def cases(session: Path) -> dict[str, list[Command]]:
    found: dict[str, list[Command]] = {}
    commands: list[Command] = []
    for line in session.read_text().splitlines():
        if line.startswith("  $ "):
            commands.append(Command(line[4:]))
        elif line.startswith("  "):
            commands[-1].take(line[2:])
        elif line:
            heading = HEADING.fullmatch(line)
            assert heading is not None, f"{session.name}: where does this come from? {line}"
            commands = found[heading["title"]] = []
    return found


CASES = [(path.stem, title, commands) for path in SESSIONS for title, commands in cases(path).items()]


def script(commands: list[Command], directory: Path) -> str:
    """All commands of a case, in one mount namespace; each leaves its answer in files of its own."""
    lines = [f"PATH={directory}/bin:$PATH"]
    for number, command in enumerate(commands):
        lines += [
            f"cd {directory}/config",
            f"sh -c {shlex.quote(command.text)} >{directory}/{number}.out 2>{directory}/{number}.err",
            f"echo $? >{directory}/{number}.status",
        ]
    return "\n".join(lines) + "\n"


@pytest.fixture
def answers(lan: Lan, tmp_path: Path, case: list[Command]) -> list[Command]:
    """What uci really answers. The LAN is what gives the right to mount."""
    for name in ("bin", "config"):
        (tmp_path / name).mkdir()
    tool = tmp_path / "bin/uci"
    tool.write_text(UCI.format(program=binaries.sim_programs()["uci"], directory=tmp_path))
    tool.chmod(0o755)
    subprocess.run(["unshare", "--mount", "sh", "-s"], input=script(case, tmp_path), text=True, check=True)
    return [
        Command(
            command.text,
            (tmp_path / f"{number}.out").read_text().splitlines(),
            (tmp_path / f"{number}.err").read_text().splitlines(),
            int((tmp_path / f"{number}.status").read_text()),
        )
        for number, command in enumerate(case)
    ]


@pytest.mark.parametrize("case", [case for *_, case in CASES], ids=[f"{name}: {title}" for name, title, _ in CASES])
def test_uci_answers_as_the_real_one(case: list[Command], answers: list[Command]) -> None:
    for expected, answer in zip(case, answers):
        if re.fullmatch(r"\(\d+ lines\)", "".join(expected.errors)):
            answer.errors = [f"({len(answer.errors)} lines)"]
    assert answers == case
