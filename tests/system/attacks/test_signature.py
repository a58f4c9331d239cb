# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Firmware that nobody with a key has made."""

from collections.abc import Iterator
from pathlib import Path

import pytest
from support.archives import archive
from support.daemon import IS_HARDENED
from support.peers import TcpPeer
from support.signing import Maker, changed
from support.uploads import send_upload
from tarvelsim import Card
from wire import Command, Status

FILES = {"pnr/kernel": b"9.9", "pnr/squashfs image": b"8.8"}
KEYS = "/etc/tarveld/keys"
REFUSED_IF_HARDENED = Status.FAILURE if IS_HARDENED else Status.SUCCESS


@pytest.fixture(scope="module", autouse=True)
def card_as_new(only_card: Card) -> None:
    """All of its log is looked at, and other files of tests leave theirs."""
    only_card.reset()


@pytest.fixture
def maker(tmp_path: Path) -> Maker:
    return Maker(tmp_path, "maker")


@pytest.fixture
def keyed_card(scratch_card: Card, maker: Maker) -> Iterator[Card]:
    """It knows one maker."""
    scratch_card.inside.run(["mkdir", "-p", KEYS])
    scratch_card.inside.write(f"{KEYS}/maker.pub", maker.public.read_text(encoding="ascii"))
    yield scratch_card
    scratch_card.inside.run(["rm", "-r", KEYS])


def upgrade(tcp: TcpPeer, members: dict[str, bytes], command: Command = Command.UPGRADE) -> Status:
    send_upload(tcp, archive(members), command)
    return Status(tcp.receive().header.status)


def ran(card: Card) -> bool:
    """Asked for when the request is done with: the daemon logs how the script ended."""
    return any("fwupgrade" in call[0] for call in card.records.calls())


def warnings(card: Card) -> list[str]:
    """What is said of the connection is no concern here."""
    lines = [line.text for line in card.records.log_lines() if line.level == "warning"]
    return [line for line in lines if not line.startswith("recv() failed")]


def test_signed_firmware_which_is_no_attack(keyed_card: Card, tcp: TcpPeer, maker: Maker) -> None:
    assert upgrade(tcp, maker.archive(FILES)) == Status.SUCCESS
    keyed_card.records.wait_log("SUCCESS")
    assert warnings(keyed_card) == []


def test_second_key_of_a_card(keyed_card: Card, tcp: TcpPeer, tmp_path: Path) -> None:
    second = Maker(tmp_path, "second")
    keyed_card.inside.write(f"{KEYS}/second key.pub", second.public.read_text(encoding="ascii"))
    assert upgrade(tcp, second.archive(FILES)) == Status.SUCCESS


@pytest.mark.parametrize(
    ("name", "content", "reason"),
    [
        ("SHA256SUMS.sig", None, "it has no SHA256SUMS and SHA256SUMS.sig"),
        ("SHA256SUMS", None, "it has no SHA256SUMS and SHA256SUMS.sig"),
        ("SHA256SUMS", b"", f"none of the keys in {KEYS} has signed its SHA256SUMS"),
        ("pnr/kernel", b"evil", "a sum in its SHA256SUMS is wrong"),
        ("pnr/kernel", None, "a sum in its SHA256SUMS is wrong"),
        ("pnr/planted", b"evil", "pnr/planted is not in its SHA256SUMS"),
    ],
    ids=["no signature", "no sums", "other sums", "changed file", "missing file", "added file"],
)
def test_firmware_that_its_maker_has_not_made_so(
    keyed_card: Card, tcp: TcpPeer, maker: Maker, name: str, content: bytes | None, reason: str
) -> None:
    assert upgrade(tcp, changed(maker.archive(FILES), name, content)) == REFUSED_IF_HARDENED
    if IS_HARDENED:
        refusal = keyed_card.records.wait_log("Firmware is not accepted", level="warning")
        assert refusal.text == f"Firmware is not accepted: {reason}"
        assert not ran(keyed_card)
        assert list(keyed_card.inside.path("/tmp/upgrade").iterdir()) == []
    else:
        keyed_card.records.wait_call("fwupgrade")


def test_firmware_of_another_maker(keyed_card: Card, tcp: TcpPeer, tmp_path: Path) -> None:
    assert upgrade(tcp, Maker(tmp_path, "other").archive(FILES)) == REFUSED_IF_HARDENED


def test_signed_file_in_place_of_another(keyed_card: Card, tcp: TcpPeer, maker: Maker) -> None:
    """Both are signed, but not so."""
    members = maker.archive({"pnr/kernel": b"new", "old": b"old"})
    members["pnr/kernel"] = members["old"]
    assert upgrade(tcp, members) == REFUSED_IF_HARDENED


def test_files_that_nobody_signed_beside_signed_firmware(keyed_card: Card, tcp: TcpPeer, maker: Maker) -> None:
    assert upgrade(tcp, {"planted": b"evil"}, Command.UPLOAD) == Status.SUCCESS
    keyed_card.inside.hold("fwupgrade")
    assert upgrade(tcp, maker.archive(FILES)) == Status.SUCCESS
    keyed_card.records.wait_call("fwupgrade")
    assert keyed_card.inside.exists("/tmp/upgrade/planted") != IS_HARDENED
    keyed_card.inside.release()


def test_upload_without_an_upgrade_needs_no_signature(keyed_card: Card, tcp: TcpPeer) -> None:
    assert upgrade(tcp, FILES, Command.UPLOAD) == Status.SUCCESS
    assert not ran(keyed_card)


def test_card_without_a_key_takes_firmware_of_anybody(scratch_card: Card, tcp: TcpPeer) -> None:
    assert upgrade(tcp, {"pnr/": b"", **FILES}) == Status.SUCCESS
    scratch_card.records.wait_log("SUCCESS")
    told = f"There is no key in {KEYS}: firmware of anybody is accepted"
    assert warnings(scratch_card) == ([told] if IS_HARDENED else [])
