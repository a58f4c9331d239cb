#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Checks the rules of the house that no other tool knows, on all files that git tracks.

Usage: check_style.py [ROOT]
"""

import re
import subprocess
import sys
from collections.abc import Iterator
from pathlib import Path

COMMENT = {".h": "//", ".cpp": "//", ".py": "#", ".sh": "#", ".cmake": "#", "CMakeLists.txt": "#"}

# Lines that a file may have, by the first pattern that fits.
CEILINGS = [
    (re.compile(r"tests/.*\.(h|cpp|py)"), 300),
    (re.compile(r".*\.h"), 150),
    (re.compile(r".*\.cpp"), 250),
    (re.compile(r".*\.py"), 300),
]

CODE = {".h", ".cpp"}
TABS_ALLOWED = re.compile(r"(.*/)?Makefile|.*\.mk|.*\.init|.*\.scd|.*Config\.in|.*\.patch|packaging/openwrt/.*")

# A name that exists on one machine only.
PRIVATE_PATH = re.compile(r"(?<![\w.])/(?:root|home)/")


def kind(name: str) -> str:
    path = Path(name)
    return path.name if path.name in COMMENT else path.suffix


def has_licence(name: str, lines: list[str]) -> bool:
    comment = COMMENT.get(kind(name))
    if comment is None and not (lines and lines[0].startswith("#!")):
        return True
    comment = comment or "#"
    wanted = [f"{comment} SPDX-License-Identifier: MIT", f"{comment} SPDX-FileCopyrightText: The tarveld authors"]
    start = 1 if lines and lines[0].startswith("#!") else 0
    return lines[start : start + 2] == wanted


def too_long(name: str, lines: list[str]) -> Iterator[str]:
    for pattern, ceiling in CEILINGS:
        if pattern.fullmatch(name):
            if len(lines) > ceiling:
                yield f"{name}: {len(lines)} lines, {ceiling} are the ceiling: make two rooms of it"
            return


def check_line(name: str, number: int, line: str) -> Iterator[str]:
    where = f"{name}:{number}"
    if "\t" in line and not TABS_ALLOWED.fullmatch(name):
        yield f"{where}: tab"
    if line != line.rstrip():
        yield f"{where}: blank at the end"
    if kind(name) in CODE and re.match(r"\s*using namespace\b", line):
        yield f"{where}: using namespace"
    if found := PRIVATE_PATH.search(line):
        yield f"{where}: {found.group()} exists on one machine only"


def check_text(name: str, text: str) -> Iterator[str]:
    lines = text.splitlines()
    if not has_licence(name, lines):
        yield f"{name}: no SPDX lines at the top"
    if text and not text.endswith("\n"):
        yield f"{name}: no newline at the end"
    if name.endswith(".h") and "#pragma once" not in lines:
        yield f"{name}: no #pragma once"
    yield from too_long(name, lines)
    for number, line in enumerate(lines, 1):
        yield from check_line(name, number, line)


def tracked_files(root: Path) -> list[str]:
    command = ["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\0")
    return sorted(name for name in set(names) if name and (root / name).is_file())


def check(root: Path) -> list[str]:
    complaints = []
    for name in tracked_files(root):
        if name.startswith("tests/fuzz/corpus/"):
            continue  # bytes as they travel
        try:
            text = (root / name).read_text(encoding="utf-8")
        except UnicodeDecodeError:
            continue  # a binary sample
        complaints += check_text(name, text)
    return complaints


def main() -> int:
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    complaints = check(root)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
