# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The measurements of scripts/bench, which starts this inside a simulated LAN."""

import argparse
import sys
from collections.abc import Callable, Iterable, Iterator, Sequence
from pathlib import Path
from typing import TypeVar

from card import measured_card, swallowed_log
from effort import FULL, SHORT, Effort
from functions import function_rows
from growth import Point, growth_points, growth_table
from jobs_client import client_rows
from jobs_process import idle_rows, memory_rows, start_rows
from jobs_tcp import tcp_rows
from jobs_udp import udp_rows
from jobs_upload import upload_rows
from page import circumstances, fill
from plot import plot
from record import write_json
from rows import Row, table
from sizes import size_rows
from tarvelsim import Lan

_ON_A_CARD: dict[str, Callable[..., Iterator[Row]]] = {
    "tcp": tcp_rows,
    "udp": udp_rows,
    "upload": upload_rows,
    "idle": idle_rows,
    "memory": memory_rows,
}


def _card_rows(lan: Lan, jobs: list[str], effort: Effort) -> Iterator[Row]:
    with measured_card(lan) as card:
        with swallowed_log(card):
            for name in jobs:
                if name in _ON_A_CARD:
                    yield from _ON_A_CARD[name](card, effort)
        if "start" in jobs:
            yield from start_rows(card, effort)


def _rows(lan: Lan, jobs: list[str], effort: Effort) -> Iterator[Row]:
    if set(jobs) & {*_ON_A_CARD, "start"}:
        yield from _card_rows(lan, jobs, effort)
    if "client" in jobs:
        yield from client_rows(lan, effort)
    if "functions" in jobs:
        yield from function_rows()
    if "sizes" in jobs:
        yield from size_rows()


def _parsed(names: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/bench", description=__doc__)
    parser.add_argument("--json", type=Path, metavar="FILE", help="write the same figures as JSON")
    parser.add_argument("--write", type=Path, metavar="PAGE", help="put the tables and the plot into this page")
    parser.add_argument("--short", action="store_true", help="less often: two minutes instead of ten")
    parser.add_argument("jobs", nargs="*", default=[], metavar="JOB", help=f"only these: {' '.join(names)}")
    arguments = parser.parse_args()
    for job in arguments.jobs:
        if job not in names:
            parser.error(f'there is no job "{job}"; jobs are: {" ".join(names)}')
    return arguments


Measured = TypeVar("Measured", Row, Point)


def _noted(measured: Iterable[Measured]) -> Iterator[Measured]:
    """Tells those who wait how far it is."""
    for one in measured:
        print(f"{one.job}: measured", file=sys.stderr)
        yield one


def _show(name: str, lines: Sequence[str], page: Path | None) -> None:
    print("\n".join(lines))
    if page is not None:
        fill(page, name, [circumstances(), "", *lines])


def main() -> int:
    names = [*_ON_A_CARD, "start", "client", "functions", "sizes", "growth"]
    arguments = _parsed(names)
    effort = SHORT if arguments.short else FULL
    lan = Lan.current()
    jobs = arguments.jobs or names
    rows = list(_noted(_rows(lan, jobs, effort)))
    points = list(_noted(growth_points(lan, effort))) if "growth" in jobs else []
    if rows:
        _show("jobs", table(rows), arguments.write)
    if points:
        _show("growth", growth_table(points), arguments.write)
    if points and arguments.write is not None:
        arguments.write.with_suffix(".svg").write_text(plot(points), encoding="utf-8")
    if arguments.json is not None:
        write_json(rows, points, arguments.json)
    return 0


if __name__ == "__main__":
    sys.exit(main())
