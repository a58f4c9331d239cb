# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Waiting for events; the only place where anything naps."""

import time
from collections.abc import Callable
from typing import TypeVar

from .errors import WaitTimeout

_NAP = 0.003
T = TypeVar("T")


def wait_for(look: Callable[[], T | None], timeout: float, describe: Callable[[], str]) -> T:
    """Returns the first thing that `look` returns and that is neither None nor False.

    `describe` makes the message of the error; it is called only when the time is over.
    """
    deadline = time.monotonic() + timeout
    while True:
        found = look()
        if found is not None and found is not False:
            return found
        if time.monotonic() > deadline:
            raise WaitTimeout(describe())
        time.sleep(_NAP)
