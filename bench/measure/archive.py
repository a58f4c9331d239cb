# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A firmware archive to check and to send."""

import io
import os
import tarfile
import zlib
from pathlib import Path

_CHUNK = 65536


def _content(size: int) -> bytes:
    """Three quarters that cannot be compressed, as in an image of a file system, and one that can."""
    line = b"a line of a table of symbols, one like the other\n"
    plain = (line * (_CHUNK // 4 // len(line) + 1))[: _CHUNK // 4]
    return b"".join(os.urandom(_CHUNK - len(plain)) + plain for _ in range(size // _CHUNK))


def write_archive(path: Path, size: int) -> None:
    """About as large as that, unpacked."""
    content = _content(size)
    compressor = zlib.compressobj(1, zlib.DEFLATED, 31)
    member = tarfile.TarInfo("image")
    member.size = len(content)
    packed = io.BytesIO()
    with tarfile.open(fileobj=packed, mode="w") as archive:
        archive.addfile(member, io.BytesIO(content))
    path.write_bytes(compressor.compress(packed.getvalue()) + compressor.flush())
