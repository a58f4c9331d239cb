# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which faults there are: each changes one place of one line."""

import random
import re
from collections.abc import Callable, Iterable, Iterator
from dataclasses import dataclass
from pathlib import Path

# One operator a line: what it looks for, and what it makes of it.
Operator = tuple[re.Pattern[str], Callable[[re.Match[str]], str]]
_OTHER = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&",
    "true": "false", "false": "true", "return 0": "return -1", "return -1": "return 0", " + ": " - ", " - ": " + ",
}  # fmt: skip
OPERATORS: list[Operator] = [
    (re.compile(r"(?<= )(==|!=|<=|>=|<|>|&&|\|\|)(?= )"), lambda found: _OTHER[found[0]]),
    (re.compile(r"\b(true|false|return 0|return -1)\b"), lambda found: _OTHER[found[0]]),
    (re.compile(r"(?<=[\w)])( \+ | - )(?=[\w(])"), lambda found: _OTHER[found[0]]),
    (re.compile(r"(?<=\bif \()(.+)(?=\) \{$)"), lambda found: f"!({found[0]})"),
    (re.compile(r"(?<![-\w.\"%])(0x[0-9a-fA-F]+|[1-9]\d*)(?![\w.'\"])"), lambda found: f"({found[0]} + 1)"),
    (re.compile(r"^(?!\s*return\b)\s+[\w:.>*-]+\(.*\);$"), lambda found: ";"),
]

_NO_CODE = re.compile(r"\s*(//|#|using |static_assert|case |\[\[)|.*\bconstexpr int required")

# What does nothing on a little-endian machine: only a big-endian build can tell whether it is there.
_BYTE_ORDER = re.compile(
    r"convert(Words|Count|Nothing)|swap(Header|Sections|Bytes)|(de|en)codeDatagram|rawSections|Endian"
)


@dataclass(frozen=True)
class Fault:
    file: str  # relative to the tree
    line: int  # from 1
    before: str
    after: str

    def __str__(self) -> str:
        return f"{self.file}:{self.line}: {self.before.strip()}  ->  {self.after.strip()}"

    @property
    def folder(self) -> str:
        return self.file.split("/")[1]

    @property
    def is_about_byte_order(self) -> bool:
        return bool(_BYTE_ORDER.search(self.before))


def _outside_of_texts(line: str, position: int) -> bool:
    return line[:position].replace('\\"', "").count('"') % 2 == 0 and "//" not in line[:position]


def faults_in_line(line: str) -> Iterator[str]:
    """Each is the whole line with one change."""
    if _NO_CODE.match(line):
        return
    for pattern, change in OPERATORS:
        for found in pattern.finditer(line):
            if _outside_of_texts(line, found.start()):
                yield line[: found.start()] + change(found) + line[found.end() :]


def faults_in_text(file: str, text: str) -> Iterator[Fault]:
    for number, line in enumerate(text.splitlines(), 1):
        for after in faults_in_line(line):
            # In a header, what looks like a call is a constructor's declaration.
            if after != ";" or not file.endswith(".h"):
                yield Fault(file, number, line, after)


def faults_in_tree(root: Path) -> list[Fault]:
    found: list[Fault] = []
    for path in sorted((root / "src").rglob("*.[ch]*")):
        found += faults_in_text(path.relative_to(root).as_posix(), path.read_text(encoding="utf-8"))
    return found


def sample(faults: Iterable[Fault], size: int, seed: int) -> list[Fault]:
    """The same ones for the same tree and seed; all of them if there are no more."""
    candidates = list(faults)
    chosen = random.Random(seed).sample(candidates, min(size, len(candidates)))
    return sorted(chosen, key=lambda fault: (fault.file, fault.line, fault.after))


def plant(fault: Fault, text: str) -> str:
    lines = text.splitlines(keepends=True)
    assert lines[fault.line - 1] == fault.before + "\n"
    lines[fault.line - 1] = fault.after + "\n"
    return "".join(lines)
