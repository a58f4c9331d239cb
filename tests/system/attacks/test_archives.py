# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Archives that want more than to be unpacked in /tmp/upgrade."""

import gzip
import io
import stat
import tarfile

import pytest
from support.archives import archive, archive_of_one
from support.daemon import HAS_BUSYBOX_TAR, IS_HARDENED
from support.peers import TcpPeer
from support.uploads import send_upload
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status

ELSEWHERE = "/tmp/elsewhere"
UPLOADS = "/tmp/upgrade"
REFUSED_NODE = "warning firmware.tar.gz has a member node that is a device, a pipe or a socket, it is not unpacked"
REFUSED_IF_HARDENED = Status.FAILURE if IS_HARDENED else Status.SUCCESS


def member(name: str, kind: bytes = tarfile.REGTYPE, target: str = "", mode: int = 0o644) -> tarfile.TarInfo:
    made = tarfile.TarInfo(name)
    made.type, made.linkname, made.mode = kind, target, mode
    return made


def packed(*members: tarfile.TarInfo, kind: int = tarfile.USTAR_FORMAT) -> bytes:
    """Members without content."""
    archive = io.BytesIO()
    with tarfile.open(fileobj=archive, mode="w", format=kind) as tar:
        for each in members:
            tar.addfile(each, io.BytesIO(bytes(each.size)))
    return archive.getvalue()


def archive_of(*members: tarfile.TarInfo) -> bytes:
    return gzip.compress(packed(*members), mtime=0)


def upload(tcp: TcpPeer, data: bytes) -> Status:
    send_upload(tcp, data, Command.UPLOAD)
    return Status(tcp.receive().header.status)


def test_link_in_one_upload_and_a_file_through_it_in_the_next(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", ELSEWHERE])
    assert upload(tcp, archive_of(member("way", tarfile.SYMTYPE, ELSEWHERE))) == REFUSED_IF_HARDENED
    assert upload(tcp, archive({"way/planted": b"outside"})) == Status.SUCCESS
    assert scratch_card.inside.exists(f"{ELSEWHERE}/planted") != IS_HARDENED


def test_others_on_the_card_look_at_what_was_uploaded(scratch_card: Card, tcp: TcpPeer) -> None:
    assert upload(tcp, archive({"secret": b""})) == Status.SUCCESS
    mode = stat.S_IMODE(scratch_card.inside.path("/tmp/upgrade").stat().st_mode)
    assert (mode & 0o077 == 0) == IS_HARDENED


def test_link_in_place_of_the_directory(scratch_card: Card) -> None:
    scratch_card.inside.run(["mkdir", ELSEWHERE])
    scratch_card.daemon.stop()
    scratch_card.inside.remove("/tmp/upgrade")
    scratch_card.inside.run(["ln", "-s", ELSEWHERE, "/tmp/upgrade"])
    scratch_card.daemon.start()
    with TcpPeer(scratch_card.address("eth0") or "") as tcp:
        assert upload(tcp, archive({"file": b""})) == Status.SUCCESS
    assert scratch_card.inside.exists(f"{ELSEWHERE}/file") != IS_HARDENED


@pytest.mark.parametrize("name", ["/tmp/elsewhere", "../elsewhere", "inner/../../elsewhere"])
def test_absolute_member_and_one_that_climbs(scratch_card: Card, tcp: TcpPeer, name: str) -> None:
    upload(tcp, archive({name: b"outside"}))
    assert not scratch_card.inside.exists(ELSEWHERE)


def refused(card: Card, tcp: TcpPeer, data: bytes, reason: str) -> bool:
    """Whether the archive was not unpacked, and the reason logged; all that was in it is gone then."""
    mark = card.records.log_mark()
    if upload(tcp, data) == Status.SUCCESS:
        return False
    line = card.records.wait_log("it is not unpacked", since=mark, level="warning")
    assert line.text == f"firmware.tar.gz {reason}, it is not unpacked"
    assert list(card.inside.path(UPLOADS).iterdir()) == []
    return True


# GNU's tar tells such a name with a backslash more, and busybox's as it is.
IN_ITS_NAME = "that has a backslash or a control character in its name"
BACKSLASH = "a member " + (r"a\b " if HAS_BUSYBOX_TAR else r"a\\b ") + IN_ITS_NAME
LINE_END = "members that cannot be told apart" if HAS_BUSYBOX_TAR else r"a member a\nb " + IN_ITS_NAME


@pytest.mark.parametrize(
    ("odd", "reason"),
    [
        (member("way", tarfile.SYMTYPE, "/etc"), "a member way that is a link that leaves the directory: /etc"),
        (member("way", tarfile.SYMTYPE, "pnr/../.."), "a member way that is a link that leaves the directory: pnr/../.."),
        (member("root", mode=0o4755), "a member root that has the setuid or setgid bit"),
        (member("root", mode=0o2755), "a member root that has the setuid or setgid bit"),
        (member("--option"), "a member --option that has a name that a program would take for an option"),
        (member("pipe", tarfile.FIFOTYPE), "a member pipe that is a device, a pipe or a socket"),
        (member("a\\b"), BACKSLASH),
        (member("a\nb"), LINE_END),
    ],
    ids=["absolute link", "climbing link", "setuid", "setgid", "option", "pipe", "backslash", "line end"],
)
def test_member_that_must_not_be_on_a_card(
    scratch_card: Card, tcp: TcpPeer, odd: tarfile.TarInfo, reason: str
) -> None:
    data = archive_of(member("pnr/", tarfile.DIRTYPE, mode=0o755), odd)
    assert refused(scratch_card, tcp, data, f"has {reason}") == IS_HARDENED


def test_member_behind_a_link_of_the_same_archive(scratch_card: Card, tcp: TcpPeer) -> None:
    data = archive_of(
        member("pnr/", tarfile.DIRTYPE, mode=0o755), member("way", tarfile.SYMTYPE, "pnr"), member("way/planted")
    )
    reason = "has a member way/planted that passes through a link of the same archive"
    assert refused(scratch_card, tcp, data, reason) == IS_HARDENED


def test_member_in_place_of_the_archive_that_is_unpacked(scratch_card: Card, tcp: TcpPeer) -> None:
    data = archive_of(member("firmware.tar.gz", tarfile.SYMTYPE, "elsewhere"))
    upload(tcp, data)
    assert scratch_card.inside.path(UPLOADS).joinpath("firmware.tar.gz").is_symlink() is False
    if IS_HARDENED:
        scratch_card.records.wait_log("would overwrite the archive", level="warning")


def test_directory_in_place_of_the_archive_that_is_unpacked(scratch_card: Card, tcp: TcpPeer) -> None:
    """Where it is not empty, nothing can be uploaded any more until somebody empties /tmp."""
    is_made = not IS_HARDENED and not HAS_BUSYBOX_TAR
    data = archive({"firmware.tar.gz/": b"", "firmware.tar.gz/inside": b""})
    assert upload(tcp, data) == (Status.SUCCESS if is_made else Status.FAILURE)
    mark = scratch_card.records.log_mark()
    send_upload(tcp, archive({"pnr/kernel": b"9.9"}), Command.UPLOAD)
    assert tcp.receive().header.status == (Status.FAILURE if is_made else Status.SUCCESS)
    if is_made:
        scratch_card.records.wait_log("fopen() failed: Is a directory", since=mark, level="warning")
        tcp.reset()  # what was not read of the archive is no request


def test_name_in_an_extended_header(scratch_card: Card, tcp: TcpPeer) -> None:
    """GNU's tar takes it, and refuses; busybox's takes the harmless one."""
    renamed = member("harmless")
    renamed.pax_headers = {"path": "../elsewhere"}
    status = upload(tcp, gzip.compress(packed(renamed, kind=tarfile.PAX_FORMAT)))
    assert status == (Status.SUCCESS if HAS_BUSYBOX_TAR else Status.FAILURE)
    assert not scratch_card.inside.exists(ELSEWHERE)


def test_archive_behind_the_end_of_another(scratch_card: Card, tcp: TcpPeer) -> None:
    """Neither what lists an archive nor what unpacks it reads on."""
    both = packed(member("plain")) + packed(member("hidden", mode=0o4755))
    assert upload(tcp, gzip.compress(both)) == Status.SUCCESS
    assert scratch_card.inside.listdir(UPLOADS) == ["plain"]


def test_hard_link_to_a_file_of_the_card(scratch_card: Card, tcp: TcpPeer) -> None:
    """GNU's tar looks for it below /tmp/upgrade."""
    scratch_card.inside.write(ELSEWHERE, "")
    is_made = HAS_BUSYBOX_TAR and not IS_HARDENED
    data = archive_of(member("way", tarfile.LNKTYPE, ELSEWHERE))
    assert upload(tcp, data) == (Status.SUCCESS if is_made else Status.FAILURE)
    assert scratch_card.inside.path(ELSEWHERE).stat().st_nlink == (2 if is_made else 1)


def test_device_node(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    """A simulated card's kernel lets nobody make one."""
    device = member("node", tarfile.CHRTYPE)
    device.devmajor, device.devminor = 1, 3
    upload(tcp, archive_of(device))
    assert ("Operation not permitted" in watch.console()) != IS_HARDENED
    assert watch.logged(REFUSED_NODE) == IS_HARDENED


@pytest.mark.skipif(HAS_BUSYBOX_TAR, reason="says nothing where there is no such owner, as on a simulated card")
def test_file_of_another_owner(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    upload(tcp, archive_of_one("own", 1000, 1000))
    assert "own: Cannot change ownership to uid 1000, gid 1000" in watch.console()


def test_files_of_an_earlier_upload_beside_an_upgrade(scratch_card: Card, tcp: TcpPeer) -> None:
    assert upload(tcp, archive({"old": b""})) == Status.SUCCESS
    scratch_card.inside.hold("fwupgrade")
    send_upload(tcp, archive({"pnr/kernel": b"9.9"}), Command.UPGRADE)
    scratch_card.records.wait_call("fwupgrade")
    assert scratch_card.inside.exists(f"{UPLOADS}/old") != IS_HARDENED
    scratch_card.inside.release()


def test_owner_that_looks_like_the_rest_of_a_line(scratch_card: Card, tcp: TcpPeer) -> None:
    """Both kinds of tar tell owners by their names in the archive."""
    link = member("x", tarfile.SYMTYPE, ELSEWHERE)
    link.uname = "r 0 2026-11-22 14:51 x -> b"
    assert refused(scratch_card, tcp, archive_of(link), "has members that cannot be told apart") == IS_HARDENED


def test_archive_that_unpacks_to_more_than_the_card_has_room_for(scratch_card: Card, tcp: TcpPeer) -> None:
    """The build that is tested takes 16 MiB."""
    large = member("pnr/padding")
    large.size = (16 << 20) + 1
    reason = f"is too large: more than {16 << 20} bytes"
    assert refused(scratch_card, tcp, archive_of(large), reason) == IS_HARDENED


def test_archive_of_members_without_end(scratch_card: Card, tcp: TcpPeer) -> None:
    many = [member(f"{number:090}") for number in range(12_000)]
    assert refused(scratch_card, tcp, archive_of(*many), "has too many members") == IS_HARDENED


def test_plain_archive_which_is_no_attack(scratch_card: Card, tcp: TcpPeer) -> None:
    link = member("pnr/newest", tarfile.SYMTYPE, "kern\u00e9l")
    twin = member("pnr/twin", tarfile.LNKTYPE, "pnr/kern\u00e9l")
    data = archive_of(member("pnr/", tarfile.DIRTYPE, mode=0o755), member("pnr/kern\u00e9l"), link, twin)
    assert upload(tcp, data) == Status.SUCCESS
    names = {path.name for path in scratch_card.inside.path(f"{UPLOADS}/pnr").iterdir()}
    assert names == {"kern\u00e9l", "newest", "twin"}
