#!/usr/bin/python3
# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The measurements of bench/client, which starts this inside a simulated LAN."""

import statistics
import subprocess
import sys
import time
from collections.abc import Sequence
from contextlib import ExitStack
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "sim"))

import tarvelsim  # noqa: E402

CARDS = 8
LONGEST_VERSIONS = 0.2  # seconds for all of them
LARGEST_START = 1.5  # times the start of a program that does nothing


def seconds(command: Sequence[str]) -> float:
    start = time.perf_counter()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    return time.perf_counter() - start


def median(command: Sequence[str], runs: int) -> float:
    seconds(command)  # fills the caches
    return statistics.median(seconds(command) for _ in range(runs))


def shortest(one: Sequence[str], other: Sequence[str], runs: int) -> tuple[float, float]:
    """The best of many, in turns: what a start takes when nothing else gets in the way."""
    pairs = [(seconds(one), seconds(other)) for _ in range(runs)]
    return min(pair[0] for pair in pairs), min(pair[1] for pair in pairs)


def versions_of_all(client: str) -> float:
    lan = tarvelsim.Lan.current()
    with ExitStack() as stack:
        cards = [stack.enter_context(lan.card(f"card{number}")) for number in range(1, CARDS + 1)]
        addresses = [card.address("eth0") or "" for card in cards]
        return median([client, "versions", *addresses], 20)


def main() -> int:
    build = Path(sys.argv[1])
    client = str(build / "tarvelctl")
    versions = versions_of_all(client)
    print(f"versions of {CARDS} cards   {versions * 1000:7.1f} ms   (limit {LONGEST_VERSIONS * 1000:.0f} ms)")
    start, hello = shortest([client, "--version"], [str(build / "bench_hello")], 200)
    print(f"tarvelctl --version   {start * 1000:7.2f} ms")
    print(f"hello, world          {hello * 1000:7.2f} ms   ratio {start / hello:.2f}   (limit {LARGEST_START})")
    return 0 if versions < LONGEST_VERSIONS and start < hello * LARGEST_START else 1


if __name__ == "__main__":
    sys.exit(main())
