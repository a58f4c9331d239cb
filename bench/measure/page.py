# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Puts what was measured into a page, between marks, and the plot beside it."""

import datetime
import os
import platform
import re
from collections.abc import Sequence
from pathlib import Path


def fill(page: Path, name: str, lines: Sequence[str]) -> None:
    """Replaces what stands between the marks of this name."""
    block = "\n".join([f"<!-- {name} -->", "", *(f"    {line}".rstrip() for line in lines), "", f"<!-- end of {name} -->"])
    marks = re.compile(rf"<!-- {name} -->.*?<!-- end of {name} -->", re.DOTALL)
    text, count = marks.subn(lambda _: block, page.read_text(encoding="utf-8"))
    if count != 1:
        raise ValueError(f"{page} has {count} places for {name}, not one")
    page.write_text(text, encoding="utf-8")


def circumstances() -> str:
    """When and on what the figures were taken."""
    models = re.findall(r"^model name\s*:\s*(.*)$", Path("/proc/cpuinfo").read_text(encoding="ascii"), re.MULTILINE)
    processor = models[0] if models else platform.machine()
    day = datetime.date.today().isoformat()
    return f"{day}, {os.cpu_count()} processors ({processor}), Linux {platform.release()}"
