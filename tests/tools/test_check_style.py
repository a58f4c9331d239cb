# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

import check_style
import pytest

LICENCE = "// SPDX-License-Identifier: MIT\n// SPDX-FileCopyrightText: The tarveld authors\n"
HOME = "/" + "home/"  # in two halves: this file is checked, too


def complaints(name: str, text: str) -> list[str]:
    return list(check_style.check_text(name, text))


def test_a_clean_file_passes() -> None:
    assert complaints("src/util/Log.h", LICENCE + "\n#pragma once\n") == []


def test_a_source_needs_its_licence_lines() -> None:
    assert complaints("src/util/Log.cpp", "int main();\n") == ["src/util/Log.cpp: no SPDX lines at the top"]


def test_a_script_has_them_behind_its_first_line() -> None:
    text = "#!/usr/bin/env bash\n" + LICENCE.replace("//", "#")
    assert complaints("scripts/demo", text) == []


def test_a_page_of_prose_needs_none() -> None:
    assert complaints("README.md", "# tarveld\n") == []


def test_a_long_source_is_refused() -> None:
    assert "251 lines" in complaints("src/core/Daemon.cpp", LICENCE + "\n" * 249)[0]


def test_a_test_may_be_longer() -> None:
    assert complaints("tests/unit/core/DaemonTest.cpp", LICENCE + "\n" * 298) == []


@pytest.mark.parametrize(
    ("line", "complaint"),
    [
        ("\tint x;", "tab"),
        ("int x; ", "blank at the end"),
        ("using namespace std;", "using namespace"),
        ("// see " + HOME + "notes", HOME + " exists on one machine only"),
    ],
)
def test_a_line_is_refused(line: str, complaint: str) -> None:
    assert complaints("src/util/Log.cpp", LICENCE + line + "\n") == [f"src/util/Log.cpp:3: {complaint}"]


def test_a_makefile_has_tabs() -> None:
    assert complaints("packaging/openwrt/Makefile", "all:\n\ttrue\n") == []


def test_a_path_that_only_looks_private_passes() -> None:
    assert complaints("docs/x.md", "the sandbox's ." + HOME + "x and tmp" + HOME + "y\n") == []
