# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Firmware that is uploaded, unpacked and installed."""

import random

import pytest
from support.archives import archive, archive_of_size
from support.daemon import IS_HARDENED
from support.peers import TcpPeer
from support.uploads import LISTINGS, LOOKS_FOR_KEYS, LOOKS_THROUGH, RENEW, UNPACK
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Message, Sections, Status, request

DIRECTORY = "/tmp/upgrade"
STORED = f"{DIRECTORY}/firmware.tar.gz"
SCRIPT = "/lib/upgrade/fwupgrade"
NO_KEY = ["warning There is no key in /etc/tarveld/keys: firmware of anybody is accepted"] if IS_HARDENED else []
SMALL = archive({"pnr/kernel": b"KERN-9.9.9\n", "pnr/extra": b"EXTRA-1\n"})


def upload(tcp: TcpPeer, data: bytes, command: Command = Command.UPLOAD) -> Message:
    payload = Sections(data=data).encode()
    header = Header(command=command, message_format=1, sequence=41, payload_length=len(payload))
    return tcp.ask(header.encode() + payload)


@pytest.mark.parametrize("command", [Command.UPLOAD, Command.UPGRADE], ids=["upload", "upgrade"])
def test_success_is_answered_without_payload(scratch_card: Card, tcp: TcpPeer, command: Command) -> None:
    assert upload(tcp, SMALL, command).header == Header(command=command | 0x8000, status=1, sequence=41)


def test_upload_unpacks_and_deletes_the_archive(scratch_card: Card, tcp: TcpPeer) -> None:
    upload(tcp, SMALL)
    assert scratch_card.inside.listdir(DIRECTORY) == ["pnr"]
    assert scratch_card.inside.read(f"{DIRECTORY}/pnr/kernel") == "KERN-9.9.9\n"


def test_upload_does_not_install(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    upload(tcp, SMALL)
    assert watch.commands() == [*RENEW, *LOOKS_THROUGH, UNPACK]
    assert scratch_card.inside.read("/etc/pnr/kernel") == "KERN-6.1.0\n"


def test_upload_is_logged(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    upload(tcp, SMALL)
    assert watch.log()[1:] == [f"info File size = {len(SMALL)}"]


def test_tar_is_called_with_these_arguments(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    upload(tcp, SMALL)
    assert watch.calls() == [*LISTINGS, UNPACK]


def test_extraction_is_announced_before_tar_lists_the_files(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    upload(tcp, SMALL)
    assert watch.console().splitlines() == [
        "Extracting files from firmware.tar.gz to /tmp/upgrade",
        "pnr/kernel",
        "pnr/extra",
    ]


def test_upgrade_installs_and_the_report_changes(scratch_card: Card, tcp: TcpPeer) -> None:
    upload(tcp, SMALL, Command.UPGRADE)
    report = tcp.ask(request(Command.VERSIONS)).text
    assert '<Component Id="kernel" Version="KERN-9.9.9"/>' in report
    assert '<Component Id="extra" Version="EXTRA-1"/>' in report


def test_upgrade_is_logged(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    upload(tcp, SMALL, Command.UPGRADE)
    assert watch.log()[1:] == [
        f"info File size = {len(SMALL)}",
        *NO_KEY,
        "info Upgrade process starting...",
        f"info Starting {SCRIPT}",
        "info SUCCESS",
    ]


def test_upgrade_is_answered_before_the_script_runs(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.hold("fwupgrade")
    assert upload(tcp, SMALL, Command.UPGRADE).header.status == Status.SUCCESS
    scratch_card.records.wait_call("fwupgrade", since=watch.calls_mark)
    assert watch.commands() == [*RENEW, *LOOKS_THROUGH, UNPACK, *LOOKS_FOR_KEYS, SCRIPT]
    tcp.send(request(2))
    assert not tcp.has_answer()  # nothing is served while the script runs
    scratch_card.inside.release()
    assert tcp.receive().header.status == Status.UNKNOWN_COMMAND


def test_failing_script_is_logged_and_the_client_never_learns(
    scratch_card: Card, watch: Watch, tcp: TcpPeer
) -> None:
    scratch_card.inside.fail("fwupgrade")
    assert upload(tcp, SMALL, Command.UPGRADE).header.status == Status.SUCCESS
    assert watch.log()[-1] == "warning Upgrade FAILED"
    assert tcp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND


@pytest.mark.parametrize("size", [4095, 4096, 4097, 8192, 100_001])
def test_archive_of_any_size_arrives_whole(scratch_card: Card, watch: Watch, tcp: TcpPeer, size: int) -> None:
    assert upload(tcp, archive_of_size(size)).header.status == Status.SUCCESS
    assert watch.logged(f"info File size = {size}")
    assert tcp.ask(request(2)).header.status == Status.UNKNOWN_COMMAND  # the stream is in step


def test_archive_far_larger_than_any_buffer_arrives_whole(scratch_card: Card, tcp: TcpPeer) -> None:
    content = random.Random(1).randbytes(2_000_000)
    assert upload(tcp, archive({"pnr/large": content})).header.status == Status.SUCCESS
    assert scratch_card.inside.read_bytes(f"{DIRECTORY}/pnr/large") == content


def test_archive_may_come_in_many_pieces(scratch_card: Card, tcp: TcpPeer) -> None:
    payload = Sections(data=SMALL).encode()
    whole = Header(command=Command.UPLOAD, message_format=1, payload_length=len(payload)).encode() + payload
    for start in range(0, len(whole), 7):
        tcp.send(whole[start : start + 7])
    assert tcp.receive().header.status == Status.SUCCESS


def test_next_upload_replaces_what_a_failed_one_left(scratch_card: Card, tcp: TcpPeer) -> None:
    upload(tcp, b"x" * 9000)
    assert upload(tcp, SMALL).header.status == Status.SUCCESS
    assert scratch_card.inside.read(f"{DIRECTORY}/pnr/kernel") == "KERN-9.9.9\n"
