# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Firmware: uploaded, installed, and still there after a reboot."""

import pytest
from asking import ask, connect, reboot
from card import ADDRESSES, VirtualCard
from support.archives import archive
from wire import Command, Sections, Status, request

PADDING = bytes(range(256)) * 200


def upload(command: Command, content: bytes, address: str = ADDRESSES["eth0"]) -> int:
    payload = Sections(data=content).encode()
    with connect(address) as peer:
        answer = peer.ask(request(command, message_format=1, payload_length=len(payload)) + payload)
    return answer.header.status


def firmware(version: str) -> bytes:
    return archive({"pnr/": b"", "pnr/application": f"{version}\n".encode(), "padding": PADDING})


def installed_version(card: VirtualCard) -> str:
    return card.run("cat /etc/pnr/application")


@pytest.mark.parametrize("device", ADDRESSES)
def test_an_upgrade_changes_the_versions_that_the_card_reports(card: VirtualCard, device: str) -> None:
    assert upload(Command.UPGRADE, firmware(f"APPL-{device}"), ADDRESSES[device]) == Status.SUCCESS
    versions = ask(Command.VERSIONS, address=ADDRESSES[device]).text
    assert f'<Component Id="application" Version="APPL-{device}"/>' in versions


def test_an_upgrade_survives_the_reboot(card: VirtualCard) -> None:
    upload(Command.UPGRADE, firmware("APPL-9.9.9"))
    card.wait_for_log("SUCCESS")
    reboot(card)
    assert '<Component Id="application" Version="APPL-9.9.9"/>' in ask(Command.VERSIONS).text


def test_the_log_tells_of_the_upgrade_and_its_success(card: VirtualCard) -> None:
    upload(Command.UPGRADE, firmware("APPL-9.9.9"))
    card.wait_for_log("Starting /lib/upgrade/fwupgrade")
    card.wait_for_log("SUCCESS")


def test_an_upload_alone_installs_nothing(card: VirtualCard) -> None:
    before = installed_version(card)
    assert upload(Command.UPLOAD, firmware("APPL-8.8.8")) == Status.SUCCESS
    assert installed_version(card) == before
    assert card.run("cat /tmp/upgrade/pnr/application") == "APPL-8.8.8"


def test_bytes_that_are_no_archive_are_refused(card: VirtualCard) -> None:
    before = installed_version(card)
    assert upload(Command.UPGRADE, b"no archive") == Status.FAILURE
    assert installed_version(card) == before


def test_the_listing_of_a_large_archive_pushes_older_lines_out_of_the_log(card: VirtualCard) -> None:
    members = {f"pnr/a-part-with-a-long-name-{number}": b"" for number in range(3000)}
    assert upload(Command.UPLOAD, archive({"pnr/": b"", **members})) == Status.SUCCESS
    card.wait_for_log("a-part-with-a-long-name-2999")
    assert "Starting..." not in card.log()
    card.run("rm -r /tmp/upgrade/pnr")
