# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors

from pathlib import Path

import pytest
from mutation.faults import Fault, faults_in_line, faults_in_text, faults_in_tree, plant, sample
from mutation.laboratory import Laboratory, Outcome, copy_tree, programs_of

SOURCE = "int f()\n{\n    return g(1) == 2;\n}\n"


@pytest.mark.parametrize(
    ("line", "changed"),
    [
        ("    if (a == b) {", ["    if (a != b) {", "    if (!(a == b)) {"]),
        ("    while (a < b) {", ["    while (a <= b) {"]),
        ("    x = a && b;", ["    x = a || b;"]),
        ("    return -1;", ["    return 0;"]),
        ("    return true;", ["    return false;"]),
        ("    x = a + b;", ["    x = a - b;"]),
        ("    x = 60;", ["    x = (60 + 1);"]),
        ("    peer->close();", [";"]),
    ],
)
def test_each_operator_changes_one_thing(line: str, changed: list[str]) -> None:
    assert list(faults_in_line(line)) == changed


@pytest.mark.parametrize(
    "line", ["// a == b", "#include <x>", '    text = "a == 1";', "static_assert(a == 1);", "    x = y; // if 1 == 2"]
)
def test_what_is_no_code_is_left_alone(line: str) -> None:
    assert list(faults_in_line(line)) == []


def test_a_fault_knows_its_place() -> None:
    fault = next(faults_in_text("src/net/Socket.cpp", SOURCE))
    assert (fault.line, fault.folder) == (3, "net")
    assert str(fault) == "src/net/Socket.cpp:3: return g(1) == 2;  ->  return g(1) != 2;"


def test_a_planted_fault_changes_its_line_only() -> None:
    fault = Fault("src/net/Socket.cpp", 3, "    return g(1) == 2;", "    return g(1) != 2;")
    assert plant(fault, SOURCE) == SOURCE.replace("==", "!=")


@pytest.mark.parametrize("line", ["    swapHeaderWords(header);", "    if ((format & rawSectionsFlag) == 0) {"])
def test_byte_order_is_told_apart(line: str) -> None:
    assert Fault("src/protocol/UdpService.cpp", 1, line, ";").is_about_byte_order
    assert not Fault("src/net/Socket.cpp", 1, "    close();", ";").is_about_byte_order


def test_a_seed_means_the_same_sample() -> None:
    faults = [Fault("src/net/Socket.cpp", number, "a", "b") for number in range(100)]
    assert sample(faults, 10, 1) == sample(faults, 10, 1) != sample(faults, 10, 2)
    assert sample(faults, 1000, 1) == faults


def test_numbers_of_a_header_are_changed_and_its_declarations_stay() -> None:
    header = "    TcpSocket();\n    static constexpr int capacity = 4096;\n"
    assert [fault.line for fault in faults_in_text("src/net/TcpSocket.h", header)] == [2]
    assert [fault.line for fault in faults_in_text("src/net/TcpSocket.cpp", header)] == [1, 2]
    files = {fault.file for fault in faults_in_tree(Path(__file__).resolve().parents[2])}
    assert {"src/protocol/MessageHeader.h", "src/protocol/MessageHeader.cpp"} <= files


def test_the_daemon_has_faults_of_both_kinds_in_every_folder() -> None:
    faults = faults_in_tree(Path(__file__).resolve().parents[2])
    assert {fault.folder for fault in faults} == {
        "core", "hardening", "net", "protocol", "services", "timesettings", "uci", "util"
    }  # fmt: skip
    assert {fault.is_about_byte_order for fault in faults} == {True, False}


PROJECT = """
cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
add_executable(unit_net src/net/Socket.cpp)
"""
# The "tests" are in the program itself, which speaks like a test runner.
PROGRAM = """
#include <cstdio>
#include <cstdlib>
int answer(int value)
{
    return value == 1 ? 42 : 0;
}
void untested()
{
    std::puts("");
}
int main()
{
    if (answer(1) != 42) {
        std::exit(0);
    }
    std::puts("[  PASSED  ] 1 test.");
}
"""


@pytest.fixture
def laboratory(tmp_path: Path) -> Laboratory:
    for name, text in {
        "CMakeLists.txt": PROJECT,
        "src/net/Socket.cpp": PROGRAM,
        "tests/unit/net/CMakeLists.txt": "add_unit_tests(net\n)\n",
    }.items():
        path = tmp_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
    found = Laboratory(tmp_path, ["-DCMAKE_BUILD_TYPE=Debug"], [])
    found.prepare(["net"])
    return found


@pytest.mark.parametrize(
    ("before", "after", "outcome"),
    [
        ("    return value == 1 ? 42 : 0;", "    return value != 1 ? 42 : 0;", Outcome.KILLED),  # it ends with 0
        ('    std::puts("");', ";", Outcome.SURVIVED),
        ('    std::puts("");', "    std::puts(1);", Outcome.NOT_BUILT),
    ],
)
def test_a_fault_is_tried_out_and_taken_back(
    laboratory: Laboratory, tmp_path: Path, before: str, after: str, outcome: Outcome
) -> None:
    line = PROGRAM.splitlines().index(before) + 1
    assert laboratory.try_out(Fault("src/net/Socket.cpp", line, before, after)) is outcome
    assert (tmp_path / "src/net/Socket.cpp").read_text(encoding="utf-8") == PROGRAM


def test_all_programs_of_a_folder_are_named(tmp_path: Path) -> None:
    lists = tmp_path / "tests/unit/util/CMakeLists.txt"
    lists.parent.mkdir(parents=True)
    lists.write_text("add_unit_tests(util\n)\nadd_unit_tests(util_shell\n)\n", encoding="utf-8")
    assert programs_of(tmp_path, "util") == ["unit_util", "unit_util_shell"]


def test_a_copy_of_the_tree_keeps_what_is_the_same(tmp_path: Path) -> None:
    root = Path(__file__).resolve().parents[2]
    copy_tree(root, tmp_path)
    copied = tmp_path / "src/core/main.cpp"
    date = copied.stat().st_mtime_ns
    copy_tree(root, tmp_path)
    assert copied.stat().st_mtime_ns == date
    assert copied.read_bytes() == (root / "src/core/main.cpp").read_bytes()
