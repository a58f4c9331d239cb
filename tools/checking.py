# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How the checkers are told of a tree, and tell what they miss in it."""

import sys
from collections.abc import Callable
from pathlib import Path


def run(check: Callable[[Path], list[str]]) -> int:
    """Checks the tree that the command line names, or this one; the exit status says whether all is well."""
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    complaints = check(root)
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0
