# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

import subprocess
from pathlib import Path

import check_types
import pytest


@pytest.fixture
def tree(tmp_path: Path) -> Path:
    """The smallest tree with nothing to complain about."""
    subprocess.run(["git", "init", "-q", str(tmp_path)], check=True)
    write(tmp_path, "tools/good.py", "def one() -> int:\n    return 1\n")
    return tmp_path


def write(root: Path, name: str, text: str) -> None:
    path = root / name
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")


def test_a_tree_with_types_passes(tree: Path) -> None:
    assert check_types.check(tree) == []


def test_a_function_without_types_is_refused(tree: Path) -> None:
    write(tree, "tools/untyped.py", "def one():\n    return 1\n")
    assert "tools/untyped.py:1" in check_types.check(tree)[0]


def test_a_module_is_found_where_its_folder_looks_for_it(tree: Path) -> None:
    write(tree, "tests/tools/test_good.py", "import good\n\nTEXT: str = good.one()\n")
    assert "Incompatible types" in check_types.check(tree)[0]


def test_a_program_is_known_by_its_first_line(tree: Path) -> None:
    write(tree, "tools/run_it", "#!/usr/bin/python3\nNUMBER: int = 'text'\n")
    assert "tools/run_it:2" in check_types.check(tree)[0]


def test_a_shell_script_is_left_alone(tree: Path) -> None:
    write(tree, "tools/build", "#!/usr/bin/env bash\necho python\n")
    assert check_types.check(tree) == []


def test_a_file_of_no_known_folder_is_refused(tree: Path) -> None:
    write(tree, "attic/old.py", "")
    assert check_types.check(tree) == ["attic/old.py: where its modules are is not said in check_types.py"]
