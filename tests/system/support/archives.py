# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Firmware archives, the same bytes each time."""

import gzip
import io
import random
import tarfile
import zlib
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


def archive_of_one(name: str, uid: int = 0, gid: int = 0, mode: int = 0o644) -> bytes:
    """Of one empty file, with an owner and a mode of its own."""
    packed = io.BytesIO()
    with tarfile.open(fileobj=packed, mode="w:gz") as tar:
        member = tarfile.TarInfo(name)
        member.uid, member.gid, member.mode = uid, gid, mode
        tar.addfile(member)
    return packed.getvalue()


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


def archive_of_zeros() -> bytes:
    """1000 MiB in one MiB: it takes a while to look through."""
    member = tarfile.TarInfo("pnr/padding")
    member.size = 1000 << 20
    header = member.tobuf(tarfile.USTAR_FORMAT)
    return gzip.compress(header) + gzip.compress(bytes(1 << 20), mtime=0) * 1000 + gzip.compress(bytes(1024))


def name_of_many(index: int) -> str:
    return f"usr/lib/component{index // 1000:03}/member{index:06}"


def archive_of_many(number: int, kind: bytes, more: Mapping[str, bytes] | None = None) -> bytes:
    """So many members without content; links lead to a name beside them. More files may follow."""
    member = tarfile.TarInfo("usr/lib/component000/member000000")
    member.type = kind
    member.linkname = "target" if kind == tarfile.SYMTYPE else ""
    header = member.tobuf(tarfile.USTAR_FORMAT)
    packer = zlib.compressobj(1, wbits=31)
    packed = []
    for index in range(number):
        packed.append(packer.compress(_renamed(header, name_of_many(index).encode())))
    for name, content in (more or {}).items():
        file = tarfile.TarInfo(name)
        file.size = len(content)
        packed.append(packer.compress(file.tobuf(tarfile.USTAR_FORMAT) + content + bytes(-len(content) % 512)))
    return b"".join((*packed, packer.compress(bytes(1024)), packer.flush()))


def _renamed(header: bytes, name: bytes) -> bytes:
    """The same with another name, of the same length."""
    checksum = int(header[148:154], 8) + sum(name) - sum(header[: len(name)])
    return b"".join((name, header[len(name) : 148], b"%06o" % checksum, header[154:]))
