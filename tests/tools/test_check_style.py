# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

import subprocess
from pathlib import Path

import check_style
import pytest

LICENCE = "// SPDX-License-Identifier: MIT\n// SPDX-FileCopyrightText: The tarveld authors\n"
HOME = "/" + "home/"  # in two halves: this file is checked, too


def complaints(name: str, text: str) -> list[str]:
    return list(check_style.check_text(name, text))


def test_a_clean_file_passes() -> None:
    assert complaints("src/util/Log.h", LICENCE + "#pragma once\n") == []


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
    assert complaints("tests/unit/core/DaemonTest.cpp", LICENCE + "//\n" * 298) == []


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


@pytest.mark.parametrize("name", ["src/util/Log.cpp", "client/main.cpp", "sim/uci/Key.cpp", "tests/support/Script.cpp"])
def test_a_blank_line_behind_the_licence_is_refused(name: str) -> None:
    assert complaints(name, LICENCE + "\nint x;\n") == [f"{name}:3: blank line behind the SPDX lines"]


@pytest.mark.parametrize("name", ["src/util/Log.cpp", "sim/uci/Key.cpp", "tests/unit/sim/KeyTest.cpp"])
def test_an_include_of_ours_behind_one_of_the_systems_is_refused(name: str) -> None:
    text = LICENCE + '#include "a/A.h"\n\n#include "a/B.h"\n\n#include <array>\n\n#include "a/C.h"\n'
    assert complaints(name, text) == [f"{name}:9: an include of ours behind one of the system's"]


@pytest.mark.parametrize("macro", ["TEST", "TEST_F", "TEST_P", "TYPED_TEST"])
def test_a_suite_that_is_no_test_is_refused(macro: str) -> None:
    text = LICENCE + f"{macro}(KeyTest, IsOne)\n{macro}(Key, IsAnother)\n"
    name = "tests/unit/sim/KeyTest.cpp"
    assert complaints(name, text) == [f"{name}:4: the suite Key is no ...Test"]


@pytest.mark.parametrize(
    ("listing", "is_named"),
    [("src/a/CMakeLists.txt", True), ("src/CMakeLists.txt", True), ("lib/CMakeLists.txt", False)],
)
def test_a_source_is_named_where_it_is_built(tmp_path: Path, listing: str, is_named: bool) -> None:
    (tmp_path / listing).parent.mkdir(parents=True)
    (tmp_path / listing).write_text("add_library(a One.cpp)\n", encoding="utf-8")
    assert check_style.is_built(tmp_path, "src/a/One.cpp") == is_named


@pytest.mark.parametrize(
    ("recipe", "galaxy", "changelog", "complaint"),
    [
        ("PKG_VERSION:=1.2.3\n", "version: 1.2.3\n", "tarveld (1.2.3) x\n\ntarveld (1.2.2) x\n", None),
        ("PKG_VERSION:=1.2\n", "version: 1.2.3\n", "tarveld (1.2.3) x\n", "packaging/openwrt/Makefile has version 1.2"),
        ("PKG_NAME:=x\n", "version: 1.2.3\n", "tarveld (1.2.3) x\n", "packaging/openwrt/Makefile has version none"),
        ("PKG_VERSION:=1.2.3\n", "version: 1.2.4\n", "tarveld (1.2.3) x\n", "galaxy.yml has version 1.2.4"),
        ("PKG_VERSION:=1.2.3\n", "version: 1.2.3\n", "tarveld (1.2.4) x\n", "debian/changelog has version 1.2.4"),
    ],
)
def test_what_is_packaged_has_the_version_of_the_project(
    tmp_path: Path, recipe: str, galaxy: str, changelog: str, complaint: str | None
) -> None:
    collection = "packaging/ansible/ansible_collections/tarvel/cards"
    (tmp_path / "debian").mkdir()
    (tmp_path / "debian/changelog").write_text(changelog, encoding="utf-8")
    (tmp_path / "packaging/openwrt").mkdir(parents=True)
    (tmp_path / collection).mkdir(parents=True)
    (tmp_path / "CMakeLists.txt").write_text("project(tarveld VERSION 1.2.3 DESCRIPTION x)\n", encoding="utf-8")
    (tmp_path / "packaging/openwrt/Makefile").write_text(recipe, encoding="utf-8")
    (tmp_path / collection / "galaxy.yml").write_text(galaxy, encoding="utf-8")
    complaints = list(check_style.differing_versions(tmp_path))
    assert complaints == [] if complaint is None else complaint in complaints[0]


def test_a_longer_name_names_no_source(tmp_path: Path) -> None:
    (tmp_path / "CMakeLists.txt").write_text("add_library(a NotOne.cpp One.cpp.in)\n", encoding="utf-8")
    assert not check_style.is_built(tmp_path, "One.cpp")


@pytest.mark.parametrize(
    ("pattern", "is_found"), [("*Test.cpp", False), ("a/*Test.cpp", True), ("*/OneTest.cpp", True), ("b/*.cpp", False)]
)
def test_a_source_is_found_by_a_pattern(tmp_path: Path, pattern: str, is_found: bool) -> None:
    (tmp_path / "CMakeLists.txt").write_text(f"file(GLOB tests CONFIGURE_DEPENDS {pattern})\n", encoding="utf-8")
    assert check_style.is_built(tmp_path, "a/OneTest.cpp") == is_found


@pytest.mark.parametrize(("call", "is_found"), [("tests_of(a)", True), ("tests_of(b)", False), ("# a", False)])
def test_a_source_is_found_by_a_pattern_for_the_folders_that_are_named(tmp_path: Path, call: str, is_found: bool) -> None:
    text = f"file(GLOB tests CONFIGURE_DEPENDS ${{folder}}/*Test.cpp)\n{call}\n"
    (tmp_path / "CMakeLists.txt").write_text(text, encoding="utf-8")
    assert check_style.is_built(tmp_path, "a/OneTest.cpp") == is_found


def test_a_forgotten_test_is_refused(tmp_path: Path) -> None:
    subprocess.run(["git", "init", "-q", str(tmp_path)], check=True)
    (tmp_path / "OneTest.cpp").write_text(LICENCE, encoding="utf-8")
    assert check_style.check(tmp_path) == ["OneTest.cpp: no CMakeLists.txt above it names it"]


def test_a_handler_without_a_test_is_refused(tmp_path: Path) -> None:
    for name in (
        "src/services/One.cpp", "src/services/Two.cpp", "tests/unit/services/OneTest.cpp",
        "client/messages/Three.cpp", "client/messages/Four.cpp", "tests/unit/client/messages/FourTest.cpp",
    ):  # fmt: skip
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).touch()
    assert list(check_style.untested_handlers(tmp_path)) == [
        "src/services/Two.cpp: there is no tests/unit/services/TwoTest.cpp",
        "client/messages/Three.cpp: there is no tests/unit/client/messages/ThreeTest.cpp",
    ]


def test_a_command_of_the_client_without_a_row_is_refused(tmp_path: Path) -> None:
    (tmp_path / "client/commands").mkdir(parents=True)
    for name in ("One", "Two"):
        maker = f"std::unique_ptr<Command> make{name}()\n{{\n}}\n"
        (tmp_path / f"client/commands/{name}Command.cpp").write_text(maker)
    table = 'std::unique_ptr<Command> makeTwo();\nCommandRow{"one", "does it", "tarvelctl one", makeOne},\n'
    (tmp_path / "client/commands/Commands.h").write_text(table)
    assert list(check_style.unlisted_makers(tmp_path)) == [
        "client/commands/TwoCommand.cpp: no row of Commands.h names makeTwo"
    ]


@pytest.mark.parametrize(
    ("code", "place"),
    [
        ("co_await ask(Endpoint{text});", "a temporary aggregate"),
        ("co_await ask({text});", "a temporary aggregate"),
        ("co_await ask(network,\n             {text});", "a temporary aggregate"),
        ("co_await ask(std::vector<Name>{text});", "a temporary aggregate"),
        ("co_await Done{shared};", "a temporary aggregate"),
        ("n = add(Endpoint{text}, co_await ask());", "a temporary aggregate"),
        ("const Pair pair{text, co_await ask()};", "a temporary aggregate"),
        ("co_return {text, co_await ask()};", "a temporary aggregate"),
        ("co_await each([text](int n) { return n; });", "a closure with values"),
        ("co_await each(all, [&all, text](int n) { return n; });", "a closure with values"),
        ("co_await each(all, [=](int n) { return n; });", "a closure with values"),
        ("if (co_await ready()) {", "a condition"),
        ("if (!done && co_await ready()) {", "a condition"),
        ("if (first &&\n    co_await ready()) {", "a condition"),
        ("while (co_await ready()) {", "a condition"),
        ("switch (co_await state()) {", "a condition"),
        ("x = known ? co_await ask() : 0;", "a conditional expression"),
        ("x = known ? 0\n          : co_await ask();", "a conditional expression"),
        ("x = co_await ask(1, 2) ? 1 : 2;", "a conditional expression"),
        ("co_return known ? co_await ask() : 0;", "a conditional expression"),
    ],
)
def test_an_await_is_refused_where_gcc_miscompiles_it(code: str, place: str) -> None:
    found = complaints("client/engine/Parallel.cpp", LICENCE + code + "\n")
    assert [one.split(", ")[0].partition(place)[1:] for one in found] == [(place, "")]
    assert found[0].startswith("client/engine/Parallel.cpp:3: co_await ")


@pytest.mark.parametrize(
    "code",
    [
        "const Endpoint endpoint{text};\nco_await ask(endpoint);",
        "co_await each(all, [&](int n) { return n; });",
        "co_await each(all, [this, &all](int n) { return n; });",
        "co_await each(all, [](int n) -> Task<void> {\n    co_await ask(n);\n});",
        "co_await ask(names[0], std::string(text));",
        "} else {\n    co_await ask();\n}",
        "const bool ready = co_await loop.until(end);\nif (ready) {\n    co_return;\n}",
        "if (ready) {\n    co_await ask();\n}",
        "x = known ? 1 : 2;\nco_await ask();",
        "// if (co_await x), and c ? co_await a : b",
        "/* if (\nco_await x */",
        'co_await ask("who?"); // or not?',
        "const char mark = '?'; co_await ask();",
    ],
)
def test_an_await_of_its_own_passes(code: str) -> None:
    assert complaints("client/engine/Parallel.cpp", LICENCE + code + "\n") == []


def test_an_await_is_found_on_its_own_line_behind_a_long_comment() -> None:
    text = LICENCE + "/* a\nb */\nint n = 1'000'000;\nif (co_await x) {\n"
    assert complaints("client/engine/Task.h", text.replace("\nint", "\n#pragma once\nint"))[0].startswith(
        "client/engine/Task.h:7: co_await"
    )


def test_a_command_that_users_are_not_told_of_is_refused(tmp_path: Path) -> None:
    texts = {
        "docs/protocol.md": "### 1: versions report\n### 20: uptime report\n### 21: load\n",
        "client/commands/Commands.h": 'CommandRow{"ip get", "", "", makeIpGet}, CommandRow{"up", "", "", makeUp}',
        "CHANGELOG.md": "- versions\n  report, load, `tarvelctl ip get --fast`, `uptime`\n",
    }
    for name, text in texts.items():
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).write_text(text, encoding="utf-8")
    assert list(check_style.untold_commands(tmp_path)) == [
        'CHANGELOG.md: nothing is said of "uptime report", a command of the protocol',
        "CHANGELOG.md: nothing is said of `tarvelctl up`",
    ]


def test_a_file_of_the_card_that_the_manual_does_not_name_is_refused(tmp_path: Path) -> None:
    texts = {
        "docs/tarveld.8.scd.in": "_/etc/rc.d/S65ntpd_\n_/etc/pnr/_, _/tmp/a_pnr_assy_\n",
        "docs/protocol.md": "| 20 | uptime: as /proc/uptime has it |\n",
        "src/util/One.cpp": '"/etc/pnr/kernel" "/etc/rc.d/S65ntpd" "/tmp/a_pnr_assy" "cat /proc/uptime" "x/etc/passwd >/dev/null"',
        "src/util/Two.cpp": '"/etc/rc.d/" "/etc/rc.d/S65" "/tmp/a_pnr" "rm -rf /proc/uptime2 && /etc/pnr/a/b"',
    }
    for name, text in texts.items():
        (tmp_path / name).parent.mkdir(parents=True, exist_ok=True)
        (tmp_path / name).write_text(text, encoding="utf-8")
    assert list(check_style.untold_files(tmp_path)) == [
        f"src/util/Two.cpp: the daemon's manual page does not name {path}"
        for path in ("/etc/pnr/a/b", "/etc/rc.d/", "/etc/rc.d/S65", "/proc/uptime2", "/tmp/a_pnr")
    ]
