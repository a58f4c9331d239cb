# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Archives that want more than to be unpacked in /tmp/upgrade."""

import gzip
import io
import stat
import tarfile

import pytest
from support.archives import archive
from support.daemon import IS_HARDENED
from support.peers import TcpPeer
from support.uploads import send_upload
from tarvelsim import Card
from wire import Command, Status

ELSEWHERE = "/tmp/elsewhere"


def archive_of_link(name: str, target: str) -> bytes:
    packed = io.BytesIO()
    with tarfile.open(fileobj=packed, mode="w", format=tarfile.USTAR_FORMAT) as tar:
        member = tarfile.TarInfo(name)
        member.type, member.linkname = tarfile.SYMTYPE, target
        tar.addfile(member)
    return gzip.compress(packed.getvalue(), mtime=0)


def upload(tcp: TcpPeer, data: bytes) -> Status:
    send_upload(tcp, data, Command.UPLOAD)
    return Status(tcp.receive().header.status)


def test_link_in_one_upload_and_a_file_through_it_in_the_next(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", ELSEWHERE])
    assert upload(tcp, archive_of_link("way", ELSEWHERE)) == Status.SUCCESS
    assert upload(tcp, archive({"way/planted": b"outside"})) == Status.SUCCESS
    assert scratch_card.inside.exists(f"{ELSEWHERE}/planted") != IS_HARDENED


def test_others_on_the_card_look_at_what_was_uploaded(scratch_card: Card, tcp: TcpPeer) -> None:
    assert upload(tcp, archive({"secret": b""})) == Status.SUCCESS
    mode = stat.S_IMODE(scratch_card.inside.path("/tmp/upgrade").stat().st_mode)
    assert (mode & 0o077 == 0) == IS_HARDENED


def test_link_in_place_of_the_directory(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", ELSEWHERE])
    scratch_card.daemon.stop()
    scratch_card.inside.remove("/tmp/upgrade")
    scratch_card.inside.run(["ln", "-s", ELSEWHERE, "/tmp/upgrade"])
    scratch_card.daemon.start()
    with TcpPeer(tcp.socket.getpeername()[0]) as another:
        assert upload(another, archive({"file": b""})) == Status.SUCCESS
    assert scratch_card.inside.exists(f"{ELSEWHERE}/file") != IS_HARDENED


@pytest.mark.parametrize("name", ["/tmp/elsewhere", "../elsewhere", "inner/../../elsewhere"])
def test_absolute_member_and_one_that_climbs(scratch_card: Card, tcp: TcpPeer, name: str) -> None:
    upload(tcp, archive({name: b"outside"}))
    assert not scratch_card.inside.exists(ELSEWHERE)
