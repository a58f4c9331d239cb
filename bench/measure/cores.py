# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The two processors that the measurements use; one and the same where there is only one."""

import os
from collections.abc import Sequence

_ALLOWED = sorted(os.sched_getaffinity(0))
WORK = _ALLOWED[-1]
OTHER = _ALLOWED[0]


def pinned(core: int, command: Sequence[str]) -> list[str]:
    return ["taskset", "--cpu-list", str(core), *command]
