# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Completion: what a shell offers at the cursor."""

import os
import pty
import select
import shutil
import subprocess
from pathlib import Path

import pytest
from support.ctl import Ctl

GROUPS = "# the first rack\ncard01 10.0.0.11\n@rack1 card[01-16]\n@row2 card[17-32]\n"

# Calls the completion as bash does, and prints what it offers.
OFFER = """
source completion
COMP_LINE=$1 COMP_POINT=${#1}
_tarvelctl
((${#COMPREPLY[@]} == 0)) || printf '%s\\n' "${COMPREPLY[@]}"
"""


@pytest.fixture
def folder(ctl: Ctl, tmp_path: Path) -> Path:
    """Holds the script for bash and a groups file."""
    (tmp_path / "completion").write_text(ctl("completion", "bash").out)
    (ctl.config / "groups").write_text(GROUPS)
    return tmp_path


def environment(folder: Path) -> dict[str, str]:
    return {**os.environ, "XDG_CONFIG_HOME": str(folder / "config"), "TERM": "dumb", "PS1": "", "HISTFILE": ""}


def offers(folder: Path, line: str) -> list[str]:
    done = subprocess.run(
        ["bash", "-c", OFFER, "bash", line],
        cwd=folder,
        env=environment(folder),
        capture_output=True,
        text=True,
        check=True,
    )
    assert done.stderr == ""
    return done.stdout.splitlines()


@pytest.mark.parametrize(
    ("line", "expected"),
    [
        ("tarvelctl ver", ["versions"]),
        ("tarvelctl time ", ["get", "set"]),
        ("tarvelctl -o json time s", ["set"]),
        ("tarvelctl versions --di", ["--diff"]),
        ("tarvelctl versions --time", ["--timeout"]),
        ("tarvelctl -o js", ["json", "jsonl"]),
        ("tarvelctl versions --output=cs", ["csv"]),
        ("tarvelctl completion ", ["bash", "zsh", "fish"]),
        ("tarvelctl versions ", ["card01", "@rack1", "@row2"]),
        ("tarvelctl versions --diff @ra", ["@rack1"]),
        ("tarvelctl firmware upload comp", ["completion"]),
        ("tarvelctl firmware upload completion @ro", ["@row2"]),
        ("tarvelctl versions --expect comp", ["completion"]),
        ("tarvelctl versions -i l", ["lo"]),
        ("tarvelctl metrics --output comp", ["completion"]),
        ("tarvelctl metrics --outp", ["--output"]),
        ("tarvelctl report --output comp", ["completion"]),
        ("tarvelctl report --outp", ["--output"]),
        ("tarvelctl ip set --if V", ["VemkEth1", "VemkEth2"]),
        ("tarvelctl time set --ntp ", []),
        ("tarvelctl completion bash ", []),
    ],
)
def test_bash_is_offered(folder: Path, line: str, expected: list[str]) -> None:
    assert [offer for offer in offers(folder, line) if not offer.startswith("lan")] == expected


def test_another_groups_file_is_taken_from_the_line(folder: Path) -> None:
    (folder / "mine").write_text("@mine card1\n")
    assert offers(folder, f"tarvelctl --groups {folder}/mine versions @") == ["@mine"]


def test_a_missing_groups_file_offers_nothing(folder: Path) -> None:
    assert offers(folder, "tarvelctl --groups /nowhere versions ") == []


def press_keys(folder: Path, keys: str, ending: str) -> str:
    """What a bash on a terminal shows until `ending` appears."""
    child, terminal = pty.fork()
    if child == 0:
        os.chdir(folder)
        os.execvpe("bash", ["bash", "--norc", "-i"], environment(folder))
    shown = ""
    try:
        os.write(terminal, keys.encode())
        while ending not in shown and select.select([terminal], [], [], 20)[0]:
            shown += os.read(terminal, 4096).decode()
    finally:
        os.close(terminal)
        os.waitpid(child, 0)
    return shown


@pytest.mark.parametrize(
    ("typed", "completed"),
    [
        ("tarvelctl vers\t@ra\t", "<versions @rack1>"),
        ("tarvelctl --output=jsonl ti\tg\tcard\t", "<--output=jsonl time get card01>"),
    ],
)
def test_the_tab_key_completes_a_line_in_bash(folder: Path, typed: str, completed: str) -> None:
    keys = f'source completion; tarvelctl() {{ echo "<$*>"; }}\n{typed}\n'
    assert completed in press_keys(folder, keys, completed)


def test_bash_script_passes_shellcheck(folder: Path) -> None:
    if shutil.which("shellcheck") is None:
        pytest.skip("no shellcheck")
    subprocess.run(["shellcheck", "-s", "bash", "completion"], cwd=folder, check=True)


@pytest.mark.parametrize("shell", ["zsh", "fish"])
def test_other_shells_can_read_their_script(ctl: Ctl, tmp_path: Path, shell: str) -> None:
    if shutil.which(shell) is None:
        pytest.skip(f"no {shell}")
    (tmp_path / "completion").write_text(ctl("completion", shell).out)
    subprocess.run([shell, "-n", "completion"], cwd=tmp_path, check=True)


def test_fish_offers_groups(ctl: Ctl, folder: Path) -> None:
    if shutil.which("fish") is None:
        pytest.skip("no fish")
    (folder / "completion.fish").write_text(ctl("completion", "fish").out)
    script = "source completion.fish; complete -C 'tarvelctl versions @'"
    done = subprocess.run(
        ["fish", "-N", "-c", script], cwd=folder, env=environment(folder), capture_output=True, text=True, check=True
    )
    assert done.stdout.splitlines() == ["@rack1", "@row2"]
