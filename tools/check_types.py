#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs mypy --strict over every Python file of the tree.

Usage: check_types.py [ROOT]
"""

import os
import subprocess
import sys
from pathlib import Path

import checking
from check_style import tracked_files

# Where the modules of a folder are looked for, as the programs there arrange it for themselves. The longest name counts.
SEARCH_PATHS: dict[str, list[str]] = {
    "bench/count": ["bench/count", "sim", "tests/system"],
    "bench/fleet": ["bench/fleet", "sim"],
    "bench/measure": ["bench/measure", "sim", "tests/system"],
    "packaging/ansible": ["packaging/ansible"],
    "scripts": ["sim"],
    "scripts/demo.d": ["scripts/demo.d", "sim"],
    "scripts/demo.d/fleet": ["scripts/demo.d/fleet", "scripts/demo.d", "sim", "tests/integrations", "tests/system"],
    "sim": ["sim"],
    "sim/card": ["sim/card"],
    "tests/bench": ["tests/bench", "bench/measure", "bench/count", "sim", "tests/system"],
    "tests/hostile": ["tests", "tests/system", "sim"],
    "tests/integrations": [
        "tests/integrations",
        "tests/system",
        "sim",
        "packaging/ansible",
        "scripts/demo.d/fleet",
        "scripts/demo.d",
    ],
    "tests/model": ["tests", "tests/system"],
    "tests/packages": ["tests/packages"],
    "tests/system": ["tests/system", "sim"],
    "tests/tools": ["tests/tools", "tools", "tools/target", "tests", "tests/system", "sim", "sim/card", "bench/count"],
    "tests/twin": ["tests", "tests/system", "sim"],
    "tests/vcard": ["tests/vcard", "tests/system", "sim", "bench/measure"],
    "tools": ["tools"],
    "tools/target": ["tools/target"],
}


def is_python_script(path: Path) -> bool:
    with path.open("rb") as file:
        line = file.readline()
    return line.startswith(b"#!") and b"python" in line


def folder_of(name: str) -> str | None:
    """The folder of the table that the file belongs to."""
    folders = [folder for folder in SEARCH_PATHS if name.startswith(folder + "/")]
    return max(folders, key=len) if folders else None


def runs(root: Path) -> tuple[list[tuple[str, list[str]]], list[str]]:
    """What one mypy each looks at, as (folder, files), and the files of no known folder.

    The modules of a folder are one run; a program whose name does not end in .py has no name as a module, and is alone.
    """
    modules: dict[str, list[str]] = {}
    programs: list[tuple[str, list[str]]] = []
    homeless: list[str] = []
    for name in tracked_files(root):
        if not name.endswith(".py") and ("." in Path(name).name or not is_python_script(root / name)):
            continue
        folder = folder_of(name)
        if folder is None:
            homeless.append(name)
        elif name.endswith(".py"):
            modules.setdefault(folder, []).append(name)
        else:
            programs.append((folder, [name]))
    return [*modules.items(), *programs], homeless


def mypy(root: Path, folder: str, files: list[str]) -> str:
    """The complaints, empty if there are none."""
    command = ["mypy", "--strict", "--explicit-package-bases", "--no-error-summary", "--cache-dir=build/mypy", *files]
    search = {"MYPYPATH": ":".join(SEARCH_PATHS[folder])}
    done = subprocess.run(command, cwd=root, env=os.environ | search, capture_output=True, text=True, check=False)
    return done.stdout + done.stderr if done.returncode != 0 else ""


def check(root: Path) -> list[str]:
    checked, homeless = runs(root)
    complaints = [f"{name}: where its modules are is not said in check_types.py" for name in homeless]
    return complaints + [text.rstrip("\n") for run in checked if (text := mypy(root, *run))]


if __name__ == "__main__":
    sys.exit(checking.run(check))
