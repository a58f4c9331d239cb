# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Firmware archives, the same bytes each time."""

import gzip
import io
import random
import tarfile
from collections.abc import Mapping


def archive(members: Mapping[str, bytes]) -> bytes:
    """A compressed archive; a name that ends with a slash is a directory.

    Its members belong to root: only that owner exists on a simulated card.
    """
    packed = io.BytesIO()
    with tarfile.open(fileobj=packed, mode="w", format=tarfile.USTAR_FORMAT) as tar:
        for name, content in members.items():
            member = tarfile.TarInfo(name)
            if name.endswith("/"):
                member.type, member.mode = tarfile.DIRTYPE, 0o755
            member.size = len(content)
            tar.addfile(member, io.BytesIO(content))
    return gzip.compress(packed.getvalue(), mtime=0)


def archive_of_size(size: int) -> bytes:
    """An archive of exactly so many bytes, with `pnr/padding` in it."""
    noise = random.Random(size)
    length = size
    for _ in range(100):
        candidate = archive({"pnr/padding": noise.randbytes(length)})
        if len(candidate) == size:
            return candidate
        length += size - len(candidate)
    raise AssertionError(f"no archive of {size} bytes found")


def large_archive() -> bytes:
    """More than the buffers between a client and a card hold."""
    return archive({"pnr/padding": random.Random(0).randbytes(30_000_000)})
