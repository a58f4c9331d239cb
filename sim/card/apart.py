# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Work in a process of its own, which takes with it what the work needs of memory.

A card's first process shares its memory with those of all other cards, page by page, until it writes there; Python writes
to whatever it only looks at.
"""

import os
import traceback
from collections.abc import Callable


def run_apart(work: Callable[..., object], *arguments: object) -> None:
    """Waits for the end. Raises ChildProcessError if the work fails; standard error tells why."""
    pid = os.fork()
    if pid == 0:
        status = 1
        try:
            work(*arguments)
            status = 0
        except BaseException:
            traceback.print_exc()
        finally:
            os._exit(status)
    _, status = os.waitpid(pid, 0)
    if status != 0:
        raise ChildProcessError(f"what the card does for {work.__name__} has failed")
