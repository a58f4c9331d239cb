#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Lists what is linked into static programs from outside of the tree: file, where it is from, version, SHA-256.

Usage: linked.py CACHE TOOLCHAIN LOG...

Each log is named after its program, and holds what the compiler's -v tells of linking it. CACHE is where scripts/target
keeps libraries, beside the versions that they were built from.
"""

import hashlib
import json
import sys
from collections.abc import Iterator, Sequence
from dataclasses import dataclass
from pathlib import Path

# In the order in which the recipes of scripts/target.d name the versions; the other words there are sums of recipes.
_IN_RECIPE = {"sysroot": ["libxml2", "googletest"], "client": ["zlib", "libarchive", "fmtlib", "cli11", "nlohmann-json3"]}
_SUM_LENGTH = 16
# What is from which source, by its path below lib or include.
_SOURCES = {
    "libxml2.a": ["libxml2"],
    "libarchive.a": ["libarchive", "zlib"],
    "libfmt.a": ["fmtlib"],
    "fmt": ["fmtlib"],
    "CLI": ["cli11"],
    "nlohmann": ["nlohmann-json3"],
}
# Templates are linked, too, though no library has them.
_HEADERS = {"tarvelctl": ["CLI", "fmt", "nlohmann"]}
# The compiler makes these of sources of ours.
_OWN_OBJECTS = {"runtime.o", "unwinding.o"}


@dataclass(frozen=True)
class Linked:
    program: str
    file: str
    sources: list[str]  # name and version
    sum: str

    def __str__(self) -> str:
        return f"{self.program:<10}  {self.file:<18}  {self.sum}  {', '.join(self.sources)}"


class LinkLogError(Exception):
    """The log does not tell what was linked."""


def inputs_of(log: str) -> list[str]:
    """The objects and libraries of the linker's last command line in a log."""
    lines = [line.split() for line in log.splitlines() if "ld.lld" in line.split()[:2]]
    if not lines:
        raise LinkLogError("no command line of the linker")
    words = lines[-1]
    result = words.index("-o") + 1 if "-o" in words else None
    return [word for index, word in enumerate(words) if index != result and word.endswith((".o", ".a"))]


def versions_in(cache: Path, toolchain: str) -> dict[str, str]:
    """By source; from the keys of what scripts/target has built."""
    versions: dict[str, str] = {}
    for place, names in _IN_RECIPE.items():
        key = cache / f"{place}-{toolchain}/.key"
        words = key.read_text(encoding="ascii").split() if key.exists() else []
        told = [word for word in words if len(word) != _SUM_LENGTH or set(word) - set("0123456789abcdef")]
        versions |= dict(zip(names, told))
    package = next(iter(sorted((cache / "zig/node_modules/@oven").glob("zig-linux-*/package.json"))))
    versions["zig"] = json.loads(package.read_text(encoding="utf-8"))["version"]
    return versions


def sum_of(path: Path) -> str:
    """Of a file, or of all files in a folder with their names."""
    found = hashlib.sha256()
    for file in sorted(path.rglob("*")) if path.is_dir() else [path]:
        if file.is_file():
            found.update(b"" if file == path else str(file.relative_to(path)).encode() + b"\0")
            found.update(file.read_bytes())
    return found.hexdigest()


def linked_into(program: str, log: str, cache: Path, toolchain: str) -> Iterator[Linked]:
    versions = versions_in(cache, toolchain)

    def told(path: Path, names: Sequence[str]) -> Linked:
        return Linked(program, path.name, [f"{name} {versions[name]}" for name in names], sum_of(path))

    for name in inputs_of(log):
        path = Path(name)
        if cache / "zig-cache" in path.parents and path.name not in _OWN_OBJECTS:
            yield told(path, ["zig"])
        elif cache in path.parents and path.name not in _OWN_OBJECTS:
            yield told(path, _SOURCES[path.name])
    for folder in _HEADERS.get(program, []):
        yield told(cache / f"client-{toolchain}/include/{folder}", _SOURCES[folder])


def main(arguments: Sequence[str]) -> int:
    if len(arguments) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    cache, toolchain = Path(arguments[0]), arguments[1]
    for log in map(Path, arguments[2:]):
        for linked in linked_into(log.stem, log.read_text(encoding="utf-8"), cache, toolchain):
            print(linked)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
