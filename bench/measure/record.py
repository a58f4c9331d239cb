# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The figures for programs."""

import json
from collections.abc import Iterable
from dataclasses import asdict
from pathlib import Path

from growth import Point
from rows import Row


def write_json(rows: Iterable[Row], points: Iterable[Point], path: Path) -> None:
    figures = {"rows": [row.to_json() for row in rows], "growth": [asdict(point) for point in points]}
    path.write_text(json.dumps(figures, indent=1) + "\n", encoding="utf-8")
