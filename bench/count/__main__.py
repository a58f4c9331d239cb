# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Counts the instructions of two daemons for the same requests and compares them; started by bench/gate.

Usage: count BEFORE NOW, the two daemons. Ends with 1 if the second one needs too many.
"""

import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
for lender in ("sim", "tests/system"):
    sys.path.insert(0, str(ROOT / lender))

from comparison import compare, table  # noqa: E402
from counting import counted  # noqa: E402
from functions import FUNCTIONS  # noqa: E402
from tarvelsim import Lan  # noqa: E402


def main() -> int:
    before, now = (counted(Lan.current(), str(Path(program).resolve())) for program in sys.argv[1:3])
    differences = compare(
        {what: before.per_call(function) for what, function in FUNCTIONS.items()},
        {what: now.per_call(function) for what, function in FUNCTIONS.items()},
    )
    print("\n".join(table(differences)))
    return 0 if all(difference.is_acceptable for difference in differences) else 1


if __name__ == "__main__":
    sys.exit(main())
