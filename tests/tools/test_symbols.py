# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What tools/target/symbols.py makes of a listing."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools/target"))

from symbols import Symbol, origin_of, read_symbols, totals  # noqa: E402

LISTING = """\
         U missing
00000100 T without_a_size
00000100 00000040 T _Z3runv
00000200 00000060 R xmlTable
00000300 00001000 B memory
00000400 00000008 W _ZNSt3__16vectorIiE4pushEv
"""


def test_only_text_with_a_size_counts() -> None:
    assert read_symbols(LISTING) == [
        Symbol("_Z3runv", 40),
        Symbol("xmlTable", 60),
        Symbol("_ZNSt3__16vectorIiE4pushEv", 8),
    ]


def test_a_template_of_the_library_in_our_objects_is_the_librarys() -> None:
    name = "_ZNSt3__16vectorIiE4pushEv"
    assert origin_of(name, own={name}, other=set()) == "C++ library"


def test_what_nobody_defines_is_the_c_librarys() -> None:
    assert origin_of("vfprintf", own={"_Z3runv"}, other={"xmlTable"}) == "C library"


def test_the_sums_are_by_origin() -> None:
    sums = totals(read_symbols(LISTING), own={"_Z3runv"}, other={"xmlTable"})
    assert sums == {"own": 40, "libxml2": 60, "C++ library": 8}
