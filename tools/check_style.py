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
from fnmatch import fnmatch
from pathlib import Path

import checking

COMMENT = {".h": "//", ".c": "//", ".cpp": "//", ".py": "#", ".sh": "#", ".cmake": "#", "CMakeLists.txt": "#"}

# Lines that a file may have, by the first pattern that fits.
CEILINGS = [
    (re.compile(r"tests/.*\.(h|cpp|py)"), 300),
    (re.compile(r".*\.h"), 150),
    (re.compile(r".*\.(c|cpp)"), 250),
    (re.compile(r".*\.py"), 300),
]

CODE = {".h", ".c", ".cpp"}
TABS_ALLOWED = re.compile(
    r"(.*/)?Makefile|debian/rules|.*\.mk|.*\.init|.*\.scd(\.in)?|.*Config\.in|.*\.patch|packaging/openwrt/.*|tests/system/uci/.*\.t"
)

# What a compiler sees of a source is the rest.
COMMENT_OR_LITERAL = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<!\w)'(?:\\.|[^'\\\n])+'", re.DOTALL)

# gcc 12 makes wrong code of all these without a warning: a double free, or an abort.
AWAIT_IN_CONDITION = re.compile(r"\b(?:if|while|switch)\s*(?:constexpr\s*)?\([^;{}]*?\bco_await\b")
AWAIT_IN_CHOICE = re.compile(r"\?[^;{}]*?\bco_await\b|\bco_await\b[^;{}]*?\?")

# What gcc 12 destroys twice if it is made in the statement of a co_await: an aggregate, and a closure that captures by
# value. clang-format puts the brace of a body behind a blank, and that of a value beside its type.
AGGREGATE = r"(?:[\w>(]|[,=]\s+)\{"
AWAIT_BEHIND_AGGREGATE = re.compile(rf"(?:{AGGREGATE}|return \{{)[^;{{}}]*(?:\}}[^;{{}}]*)?\bco_await\b")
AWAIT_BEFORE_AGGREGATE = re.compile(rf"\bco_await\b[^;{{}}]*?{AGGREGATE}")
AWAIT_BEFORE_CLOSURE = re.compile(r"\bco_await\b[^;{}]*?(?<![\w\])])\[(?:[^\]]*,\s*)?(?!this\b)[\w=][^\]]*\]\s*\(")

AWAITS = (
    (AWAIT_IN_CONDITION, "in a condition"),
    (AWAIT_IN_CHOICE, "in a conditional expression"),
    (AWAIT_BEHIND_AGGREGATE, "beside a temporary aggregate"),
    (AWAIT_BEFORE_AGGREGATE, "beside a temporary aggregate"),
    (AWAIT_BEFORE_CLOSURE, "beside a closure with values"),
)

# A file of the card, or all of a folder.
CARD_FILE = re.compile(r"(?<![\w.])/(?:etc|tmp|var|dev|lib|proc|sys)/[\w./-]*[\w/]")

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


def without_literals(text: str) -> str:
    """The same lines, with a blank for each comment and literal."""
    return COMMENT_OR_LITERAL.sub(lambda found: " " + "\n" * found.group().count("\n"), text)


def misplaced_awaits(name: str, text: str) -> Iterator[str]:
    code = without_literals(text)
    for pattern, place in AWAITS:
        for found in pattern.finditer(code):
            number = code.count("\n", 0, found.start()) + 1
            yield f"{name}:{number}: co_await {place}, which gcc 12 miscompiles: give it a name first"


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


def misplaced_includes(name: str, lines: list[str]) -> Iterator[str]:
    """Ours come first, so that a header of ours that lacks an include of its own does not compile."""
    system = False
    for number, line in enumerate(lines, 1):
        found = re.match(r"\s*#\s*include\s*([<\"])", line)
        if found and found[1] == '"' and system:
            yield f"{name}:{number}: an include of ours behind one of the system's"
        system = system or bool(found and found[1] == "<")


def misnamed_suites(name: str, lines: list[str]) -> Iterator[str]:
    for number, line in enumerate(lines, 1):
        found = re.match(r"(?:TYPED_)?TEST(?:_[FP])?\((\w+),", line)
        if found and not found[1].endswith("Test"):
            yield f"{name}:{number}: the suite {found[1]} is no ...Test"


def check_code(name: str, text: str) -> Iterator[str]:
    lines = text.splitlines()
    if lines[2:3] == [""]:
        yield f"{name}:3: blank line behind the SPDX lines"
    yield from misplaced_includes(name, lines)
    yield from misplaced_awaits(name, text)
    yield from misnamed_suites(name, lines)


def check_text(name: str, text: str) -> Iterator[str]:
    lines = text.splitlines()
    if not has_licence(name, lines):
        yield f"{name}: no SPDX lines at the top"
    if text and not text.endswith("\n"):
        yield f"{name}: no newline at the end"
    if name.endswith(".h") and "#pragma once" not in lines:
        yield f"{name}: no #pragma once"
    yield from too_long(name, lines)
    if kind(name) in CODE:
        yield from check_code(name, text)
    for number, line in enumerate(lines, 1):
        yield from check_line(name, number, line)


def tracked_files(root: Path) -> list[str]:
    command = ["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(command, check=True, capture_output=True, text=True).stdout.split("\0")
    return sorted(name for name in set(names) if name and (root / name).is_file())


def names(word: str, path: Path) -> bool:
    """Whether a word of a CMakeLists.txt is the file, seen from there, or a pattern that it fits."""
    if "*" in word:
        return word.count("/") == len(path.parts) - 1 and fnmatch(path.as_posix(), word)
    return word.rpartition("/")[2] == path.name


def text_of(path: Path) -> str:
    """Empty if there is no such file."""
    return path.read_text(encoding="utf-8") if path.is_file() else ""


def words_of(listing: Path) -> set[str]:
    """A pattern behind a variable, such as ${folder}/*Test.cpp, stands for the folders that the listing names."""
    text = re.sub(r"#.*", "", text_of(listing))
    words = set(re.findall(r"[\w./*-]+", text))
    return words | {word + tail for tail in re.findall(r"\$\{\w+\}(/[\w./*-]+)", text) for word in words}


def is_built(root: Path, name: str) -> bool:
    """Whether a CMakeLists.txt beside or above names the file. A forgotten test fails nowhere else."""
    for folder in Path(name).parents:
        words = words_of(root / folder / "CMakeLists.txt")
        if any(names(word, Path(name).relative_to(folder)) for word in words):
            return True
    return False


def untested_handlers(root: Path) -> Iterator[str]:
    """Coverage is counted over all of src/ and of client/, where one file without a test is not noticed."""
    for room, tests in (("src/services", "tests/unit/services"), ("client/messages", "tests/unit/client/messages")):
        for source in sorted((root / room).glob("*.cpp")):
            test = f"{tests}/{source.stem}Test.cpp"
            if not (root / test).is_file():
                yield f"{room}/{source.name}: there is no {test}"


def unlisted_makers(root: Path) -> Iterator[str]:
    """A command of the client that no row names is linked and cannot be called."""
    listed = re.findall(r"\bmake\w+(?=\}|,)", text_of(root / "client/commands/Commands.h"))
    for source in sorted((root / "client/commands").glob("*.cpp")):
        for maker in re.findall(r"^std::unique_ptr<Command> (make\w+)\(\)", source.read_text("utf-8"), re.MULTILINE):
            if maker not in listed:
                yield f"client/commands/{source.name}: no row of Commands.h names {maker}"


def untold_commands(root: Path) -> Iterator[str]:
    """Users hear of a new command from the changelog, and nothing else misses that line."""
    told = " ".join(text_of(root / "CHANGELOG.md").split())
    for name in re.findall(r"^### \d+: (.+)$", text_of(root / "docs/protocol.md"), re.MULTILINE):
        if name not in told:
            yield f'CHANGELOG.md: nothing is said of "{name}", a command of the protocol'
    for name in re.findall(r'\bCommandRow\{"(.+?)"', text_of(root / "client/commands/Commands.h")):
        if not re.search(rf"`(tarvelctl )?{name}\b", told):
            yield f"CHANGELOG.md: nothing is said of `tarvelctl {name}`"


def differing_versions(root: Path) -> Iterator[str]:
    """What is packaged is read where the tree is not at hand, so it says the version once more."""
    places = {
        "CMakeLists.txt": r"^project\(tarveld VERSION ([0-9.]+)",
        "debian/changelog": r"\Atarveld \(([0-9.]+)\)",
        "packaging/openwrt/Makefile": r"^PKG_VERSION:=([0-9.]+)",
        "packaging/ansible/ansible_collections/tarvel/cards/galaxy.yml": r"^version: ([0-9.]+)",
    }
    versions = {name: re.findall(pattern, text_of(root / name), re.MULTILINE) for name, pattern in places.items()}
    if len(set(map(tuple, versions.values()))) != 1:
        yield "; ".join(f"{name} has version {' '.join(found) or 'none'}" for name, found in versions.items())


def untold_files(root: Path) -> Iterator[str]:
    """The manual page names what of the card the daemon reads, writes or runs, among its files or its commands; these are
    the protocol's."""
    manual = text_of(root / "docs/tarveld.8.scd.in") + text_of(root / "docs/protocol.md")
    named = set(CARD_FILE.findall(re.sub(r"_(/\S+?)_(?!\w)", r"\1", manual)))  # without the marks around it
    for source in sorted((root / "src").rglob("*.*")):
        for path in sorted(set(CARD_FILE.findall(text_of(source))) - {"/dev/null"}):
            if not named & {path, path.rpartition("/")[0] + "/"}:
                yield f"{source.relative_to(root)}: the daemon's manual page does not name {path}"


def check(root: Path) -> list[str]:
    complaints = [*untested_handlers(root), *unlisted_makers(root), *untold_commands(root), *untold_files(root)]
    complaints += differing_versions(root)
    for name in tracked_files(root):
        if name.endswith("Test.cpp") and not is_built(root, name):
            complaints.append(f"{name}: no CMakeLists.txt above it names it")
        if name.startswith("tests/fuzz/corpus/"):
            continue  # bytes as they travel
        try:
            text = (root / name).read_text(encoding="utf-8")
        except UnicodeDecodeError:
            continue  # a binary sample
        complaints += check_text(name, text)
    return complaints


if __name__ == "__main__":
    sys.exit(checking.run(check))
