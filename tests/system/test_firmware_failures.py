# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Uploads that fail, and how far each has come by then."""

import struct
from collections.abc import Callable

import pytest
from support.archives import archive
from support.daemon import IS_HARDENED
from support.peers import TcpPeer
from support.tracing import Tracer
from support.uploads import LOOKS_THROUGH, RENEW, UNPACK
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Sections, Status, request

STORED = "/tmp/upgrade/firmware.tar.gz"
SMALL = archive({"pnr/kernel": b"KERN-9.9.9\n"})
REFUSED = Header(command=0x8007, status=Status.FAILURE)
COMMANDS = pytest.mark.parametrize("command", [Command.UPLOAD, Command.UPGRADE], ids=["upload", "upgrade"])


def upload(tcp: TcpPeer, data: bytes, count: int | None = None, length: int | None = None) -> Header:
    """An upload that may lie about its size."""
    payload = struct.pack("<I", len(data) if count is None else count) + data
    header = Header(command=7, message_format=1, payload_length=len(payload) if length is None else length)
    return tcp.ask(header.encode() + payload).header


@COMMANDS
@pytest.mark.parametrize("message_format", [0, 2, 3, 0x11, 0x1F])
def test_wrong_sections_are_refused_unread(
    card: Card, watch: Watch, tcp: TcpPeer, command: Command, message_format: int
) -> None:
    tcp.send(request(command, message_format=message_format, payload_length=20) + request(0x77))
    assert tcp.receive().header == Header(command=command | 0x8000, status=2)
    assert tcp.receive().header.command == 0x8077
    assert watch.log()[1] == "warning FWUpgrade message should only contain a 8bit section!"
    assert f"Message format   ( 8bit): 0x{message_format:x}\n" in watch.console()


@COMMANDS
def test_client_that_closes_before_the_count_gets_no_reply(
    card: Card, watch: Watch, tcp: TcpPeer, command: Command
) -> None:
    tcp.send(request(command, message_format=1, payload_length=100) + b"\x60\0")
    tcp.end_sending()
    assert tcp.rest() == b""
    assert watch.log_without_numbers()[1:] == [
        "info Client closed the connection",  # when the count is read
        "info Client closed the connection",  # when the next header is read
        "info Socket (N) successfully closed",
    ]


OUCH = "debug TarvelServiceTcp.cpp, line 171, in ProcessFWUpload(): oups!"


@pytest.mark.parametrize(
    ("count", "length"), [(20, 25), (20, 23), (20, 0), (0xFFFFFFFF, 20), (0, 0)], ids=lambda number: str(number)
)
def test_lengths_that_disagree_are_refused_and_the_archive_is_left_unread(
    card: Card, watch: Watch, tcp: TcpPeer, count: int, length: int
) -> None:
    tcp.send(request(7, message_format=1, payload_length=length) + struct.pack("<I", count) + request(0x77))
    assert tcp.receive().header == REFUSED
    assert tcp.receive().header.command == 0x8077
    assert watch.log()[1] == OUCH
    assert not card.inside.exists(STORED)


def test_lengths_agree_when_their_sum_wraps_at_32_bits(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.send(request(7, message_format=1, payload_length=3) + b"\xff\xff\xff\xff" + b"x" * 5000)
    tcp.end_sending()
    assert tcp.receive().header == REFUSED
    assert watch.logged("info File size = 4294967295")


def test_empty_archive_is_a_failure(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert upload(tcp, b"") == REFUSED
    assert "info File size = 0" in watch.log()
    assert watch.commands() == RENEW
    assert tcp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND  # the connection is kept


def test_connection_that_ends_inside_the_archive_is_a_failure(
    scratch_card: Card, watch: Watch, tcp: TcpPeer
) -> None:
    tcp.send(request(7, message_format=1, payload_length=10004) + struct.pack("<I", 10000) + b"x" * 5000)
    tcp.end_sending()
    assert tcp.receive().header == REFUSED
    assert watch.log_without_numbers()[1:4] == [
        "info File size = 10000",
        "info Client closed the connection",
        "info Client closed the connection",
    ]
    assert scratch_card.inside.read_bytes(STORED) == b"x" * 4096


@pytest.mark.as_designed("an archive is listed with the card's own tar before it is unpacked")
def test_archive_that_cannot_be_unpacked_stays(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert upload(tcp, b"no archive") == REFUSED
    assert watch.console().endswith("Extracting files from archive failed\n")
    assert scratch_card.inside.read_bytes(STORED) == b"no archive"


def test_failed_extraction_is_not_upgraded(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.fail("tar")
    payload = Sections(data=SMALL).encode()
    header = Header(command=Command.UPGRADE, message_format=1, payload_length=len(payload))
    assert tcp.ask(header.encode() + payload).header.status == Status.FAILURE
    assert watch.commands() == ([*RENEW, *LOOKS_THROUGH, *RENEW] if IS_HARDENED else [UNPACK])


@pytest.mark.as_designed("/tmp/upgrade is made anew before an archive is stored")
def test_archive_file_that_cannot_be_opened_is_a_failure(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", STORED])
    tcp.send(request(7, message_format=1, payload_length=24) + struct.pack("<I", 20) + request(0x77))
    assert tcp.receive().header == REFUSED
    assert watch.log()[1] == "warning fopen() failed: Is a directory"
    assert tcp.receive().header.command == 0x8077  # the archive was not read


@pytest.mark.as_designed("/tmp/upgrade is made anew before an archive is stored")
def test_full_disk_is_a_failure(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["ln", "-s", "/dev/full", STORED])
    tcp.send(request(7, message_format=1, payload_length=4 + 4096) + struct.pack("<I", 4096) + b"x" * 4096)
    assert tcp.receive().header == REFUSED
    assert "warning fwrite() failed" in watch.log()
    assert watch.commands() == []


@pytest.mark.as_designed("an archive is listed with the card's own tar before it is unpacked")
def test_archive_that_replaces_itself_cannot_be_deleted(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert upload(tcp, archive({"firmware.tar.gz/": b"", "firmware.tar.gz/inside": b""})).status == Status.SUCCESS
    assert watch.log()[-1] == "warning Deleting firmware.tar.gz FAILED: Directory not empty"


@pytest.mark.needs_native
def test_archive_that_cannot_be_deleted_is_only_logged(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("unlink:error=EPERM")
    mark = scratch_card.records.log_mark()
    assert upload(connect(), SMALL).status == Status.SUCCESS
    refusal = "Deleting firmware.tar.gz FAILED: Operation not permitted"
    scratch_card.records.wait_log(refusal, since=mark, level="warning")


@pytest.mark.needs_native
def test_archive_file_that_cannot_be_closed_is_only_logged(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("close:error=EIO", path=STORED)
    mark = scratch_card.records.log_mark()
    assert upload(connect(), SMALL).status == Status.SUCCESS
    scratch_card.records.wait_log("fclose() failed", since=mark, level="warning")


@pytest.mark.needs_native
def test_write_error_is_logged_once_and_is_a_failure(
    scratch_card: Card, tracer: Tracer, connect: Callable[[], TcpPeer]
) -> None:
    tracer.inject("/^writev?$:error=ENOSPC", path=STORED)
    mark = scratch_card.records.log_mark()
    peer = connect()
    peer.send(request(7, message_format=1, payload_length=4 + 4096) + struct.pack("<I", 4096) + b"x" * 4096)
    assert peer.receive().header == REFUSED
    scratch_card.records.wait_log("fwrite() failed", since=mark, level="warning")
