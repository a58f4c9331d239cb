# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A copy of the tree in which faults are planted, built and tested, one after the other."""

import re
import resource
import shutil
import subprocess
from collections.abc import Iterable
from enum import Enum
from pathlib import Path

from .faults import Fault, plant

# Busy seconds, however loaded the machine is; all programs of a folder need a few, under emulation too.
_CPU_SECONDS = 120
# A test that waits for what never comes uses no processor.
_PATIENCE_SECONDS = 900
_OUT_OF_PATIENCE = 124  # what timeout(1) ends with, which ends all processes of the test
_OPTIONS = ["CLIENT=OFF", "SIM=OFF", "HARDENING=OFF", "UNITY_TESTS=ON"]


class Outcome(Enum):
    KILLED = "killed"
    HANGS = "killed: it hangs"
    NOT_BUILT = "does not compile"
    SURVIVED = "survived"


class BrokenTree(Exception):
    """The tree does not build, or its tests fail, without any fault."""


def programs_of(root: Path, folder: str) -> list[str]:
    lists = (root / "tests/unit" / folder / "CMakeLists.txt").read_text(encoding="utf-8")
    return [f"unit_{name}" for name in re.findall(r"add_unit_tests\((\w+)", lists)]


def copy_tree(root: Path, copy: Path) -> None:
    """What git would track. A file that is the same keeps its date, so that little is built again."""
    command = ["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\0")
    for name in names:
        source, target = root / name, copy / name
        if not name or not source.is_file():
            continue
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)


class Laboratory:
    """Builds in `copy`/build with what `configuration` adds to cmake's command line; `emulator` runs the tests."""

    def __init__(self, copy: Path, configuration: list[str], emulator: list[str]) -> None:
        self._copy = copy
        self._build = copy / "build/mutants"
        self._configuration = configuration
        self._emulator = emulator

    def prepare(self, folders: Iterable[str]) -> None:
        command = ["cmake", "-G", "Ninja", "-S", str(self._copy), "-B", str(self._build), "-DBUILD_TESTING=ON"]
        command += [f"-DTARVELD_{option}" for option in _OPTIONS]
        self._demand([*command, *self._configuration])
        for folder in folders:
            self._demand(["cmake", "--build", str(self._build), "--target", *programs_of(self._copy, folder)])
            outcome = self._test(folder)
            if outcome is not Outcome.SURVIVED:
                raise BrokenTree(f"the tests of {folder} fail without any fault")

    def try_out(self, fault: Fault) -> Outcome:
        path = self._copy / fault.file
        text = path.read_text(encoding="utf-8")
        path.write_text(plant(fault, text), encoding="utf-8")
        try:
            return self._outcome(fault.folder)
        finally:
            path.write_text(text, encoding="utf-8")

    def _outcome(self, folder: str) -> Outcome:
        command = ["cmake", "--build", str(self._build), "--target", *programs_of(self._copy, folder)]
        if subprocess.run(command, capture_output=True, check=False).returncode != 0:
            return Outcome.NOT_BUILT
        return self._test(folder)

    def _test(self, folder: str) -> Outcome:
        outcomes = (self._run(program) for program in programs_of(self._copy, folder))
        return next((outcome for outcome in outcomes if outcome is not Outcome.SURVIVED), Outcome.SURVIVED)

    def _run(self, program: str) -> Outcome:
        command = ["timeout", str(_PATIENCE_SECONDS), *self._emulator, str(self._build / program), "--gtest_brief=1"]
        run = subprocess.run(
            command,
            cwd=self._build,
            capture_output=True,
            text=True,
            errors="replace",
            check=False,
            preexec_fn=_limit_processor,
        )
        if run.returncode == _OUT_OF_PATIENCE:
            return Outcome.HANGS
        # A program that ends in the middle of its tests may do so with 0.
        passed = run.returncode == 0 and "[  PASSED  ]" in run.stdout
        return Outcome.SURVIVED if passed else Outcome.KILLED

    def _demand(self, command: list[str]) -> None:
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        if run.returncode != 0:
            raise BrokenTree("\n".join([*run.stdout.splitlines()[-40:], *run.stderr.splitlines()[-40:]]))


def _limit_processor() -> None:
    resource.setrlimit(resource.RLIMIT_CPU, (_CPU_SECONDS, _CPU_SECONDS))
