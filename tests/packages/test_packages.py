# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What is in the packages, and what their own tests say of it."""

import re
import subprocess
from pathlib import Path

import pytest
from layout import ROOT, files, is_tidy
from unpacked import environment, unpack

CONTROL = (ROOT / "debian/tests/control").read_text()
# These look at the machine that packages are installed on.
NEEDS_INSTALLATION = {"units"}
TESTS = sorted(set(re.findall(r"^Tests: (.+)$", CONTROL, re.MULTILINE)) - NEEDS_INSTALLATION)


@pytest.fixture(scope="session")
def root(tmp_path_factory: pytest.TempPathFactory) -> Path:
    return unpack(tmp_path_factory.mktemp("root"))


@pytest.mark.parametrize("name", TESTS)
def test_the_packages_own_tests_pass(root: Path, tmp_path: Path, name: str) -> None:
    done = subprocess.run(
        [ROOT / "debian/tests" / name],
        env=environment(root, tmp_path),
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        timeout=600,
        check=False,
    )
    assert done.returncode == 0, done.stdout
