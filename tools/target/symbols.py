#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Tells what the text of a static program is spent on: by origin, and by its largest symbols.

Usage: symbols.py PROGRAM OWN_LIBRARY... -- OTHER_LIBRARY...

The program has its symbols. What is in no library is the C++ or the C library's.
"""

import re
import subprocess
import sys
from collections import Counter
from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from pathlib import Path

NM = "powerpc-linux-gnu-nm"
SIZE = "powerpc-linux-gnu-size"
LARGEST = 40
# Code, read-only data, and what may be in several objects.
_TEXT = set("tTrRwWvVuiI")
_OF_CPLUSPLUS = re.compile(r"_ZN?K?(T[VISCTh])?N?K?St|_Zn|_Zd|_ZT[IS]|__cxa|__gxx|_Unwind|__unw|unw_|__cxxabi|_ZN10__cxx|libunwind")


@dataclass(frozen=True)
class Symbol:
    name: str
    size: int


def read_symbols(listing: str) -> list[Symbol]:
    """Of what nm prints with sizes in decimal numbers, those that make text."""
    found = []
    for line in listing.splitlines():
        words = line.split(maxsplit=3)
        if len(words) == 4 and words[2] in _TEXT:
            found.append(Symbol(words[3], int(words[1])))
    return found


def origin_of(name: str, own: set[str], other: set[str]) -> str:
    if name in own and not _OF_CPLUSPLUS.match(name):
        return "own"
    if name in other:
        return "libxml2"
    return "C++ library" if _OF_CPLUSPLUS.match(name) else "C library"


def totals(symbols: Iterable[Symbol], own: set[str], other: set[str]) -> Counter[str]:
    sums: Counter[str] = Counter()
    for symbol in symbols:
        sums[origin_of(symbol.name, own, other)] += symbol.size
    return sums


def _run(*command: str, text: str | None = None) -> str:
    return subprocess.run(command, input=text, capture_output=True, text=True, check=True).stdout


def _defined(libraries: Sequence[str]) -> set[str]:
    listing = _run(NM, "--defined-only", "--format=posix", *libraries)
    return {line.split()[0] for line in listing.splitlines() if " " in line}


def _readable(names: Sequence[str]) -> list[str]:
    return _run("c++filt", text="\n".join(names)).splitlines()


def main() -> int:
    cut = sys.argv.index("--")
    program, own, other = sys.argv[1], _defined(sys.argv[2:cut]), _defined(sys.argv[cut + 1 :])
    symbols = read_symbols(_run(NM, "--print-size", "--radix=d", program))
    text = int(_run(SIZE, program).splitlines()[1].split()[0])
    sums = totals(symbols, own, other)
    sums["tables of exceptions, texts without a name"] = text - sum(sums.values())
    print(f"{text:8}  text of {Path(program).name.removesuffix('.symbols')}, of this:")
    for origin, size in sums.most_common():
        print(f"{size:8}    {origin}")
    largest = sorted(symbols, key=lambda symbol: -symbol.size)[:LARGEST]
    for symbol, name in zip(largest, _readable([symbol.name for symbol in largest]), strict=True):
        print(f"{symbol.size:8}  {origin_of(symbol.name, own, other):12}  {name[:100]}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
