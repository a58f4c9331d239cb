# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Random firmware archives: good ones, damaged ones, and what is none. None of them writes outside or makes links."""

import gzip
import io
import tarfile
from random import Random

_MEMBERS = ("pnr/kernel", "pnr/application", "pnr/new", "readme", "deep/er/file", "firmware.tar.gz")


def archive(random: Random) -> bytes:
    good = _packed(random)
    kind = random.randrange(10)
    if kind == 0:
        return good[: random.randrange(1, len(good))]
    if kind == 1:
        return bytes(random.randrange(256) for _ in range(random.choice((1, 5, 4096, 4097))))
    if kind == 2:
        return gzip.compress(b"no tar", mtime=0)
    if kind == 3:
        place = random.randrange(len(good))
        return good[:place] + bytes([good[place] ^ (1 << random.randrange(8))]) + good[place + 1 :]
    return good


def _packed(random: Random) -> bytes:
    buffer = io.BytesIO()
    with tarfile.open(fileobj=buffer, mode="w") as tar:
        for name in random.sample(_MEMBERS, random.randrange(0, 4)):
            noise = random.randbytes(random.choice((10, 5000, 9000)))
            content = random.choice((b"KERN-7\n", b"", b"no newline", noise))
            member = tarfile.TarInfo(name)
            member.size = len(content)
            tar.addfile(member, io.BytesIO(content))
    return gzip.compress(buffer.getvalue(), mtime=0)
