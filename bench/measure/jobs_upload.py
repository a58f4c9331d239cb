# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The firmware upload: how fast, and that no memory goes with its size.

What is sent is no archive, so that tar refuses it at once and the receiving is what is measured.
"""

import os
from collections.abc import Iterator, Sequence

import cores
import load
import messages
from card import servers
from effort import MEBIBYTE, Effort
from jobs_tcp import timed
from rows import Row
from samples import Ratio
from server import Server
from tarvelsim import Card

_ARCHIVE = "/tmp/upgrade/firmware.tar.gz"
_WARM_UP = [MEBIBYTE] * 2


def upload_rows(card: Card, effort: Effort) -> Iterator[Row]:
    request = messages.upload_of(effort.upload_size)
    with servers(card, ("daemon", "same", "bare")) as started:
        sides, cpu = timed(
            started, "upload", request, rounds=effort.uploads, size=effort.upload_size, core=cores.OTHER
        )
        measured = sides["daemon"]
        for floor in ("same", "bare"):
            # Of throughputs: the other way round than times.
            rates = [other / one for one, other in zip(measured.times, sides[floor].times, strict=True)]
            used = cpu["daemon"] / cpu[floor]
            yield Row(
                "upload, throughput", floor, Ratio.of(rates), times=measured, floor_times=sides[floor], cpu=used
            )
    yield _memory_row(card, effort)
    card.inside.remove(_ARCHIVE)


def _memory_row(card: Card, effort: Effort) -> Row:
    free = os.statvfs(card.inside.path("/tmp"))
    fitting = [size for size in effort.memory_sizes if size < free.f_bavail * free.f_frsize]
    with servers(card, ["daemon"]) as (daemon,):
        # The first ones touch pages for good, whatever their size: the second of one size was seen to need one more.
        peaks = [_peak_memory(daemon, size) for size in [*_WARM_UP, *fitting]]
    return growth_row(peaks[len(_WARM_UP) :], [size for size in effort.memory_sizes if size not in fitting])


def growth_row(peaks: Sequence[int], left_out: Sequence[int]) -> Row:
    """From the first of the peaks to the last; a single one tells nothing."""
    note = " and ".join(f"{size // MEBIBYTE} MiB" for size in left_out)
    return Row(
        "upload, memory growth",
        value=peaks[-1] - peaks[0] if len(peaks) > 1 else None,
        unit="kB",
        note=note and f"without {note}, for which /tmp has no room",
    )


def _peak_memory(daemon: Server, size: int) -> int:
    load.ask("upload", messages.upload_of(size), [daemon.address], rounds=1, size=size, core=cores.OTHER)
    return daemon.peak_memory()
