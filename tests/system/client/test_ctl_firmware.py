# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl firmware check, upload and upgrade"""

from pathlib import Path

import pytest
from support.archives import archive, large_archive
from support.ctl import Ctl
from tarvelsim import Card

NEW_KERNEL = {"pnr/kernel": b"KERN-7.0.0\n"}
SENDS_THE_ARCHIVE = "/lib/upgrade/fwupgrade"


@pytest.fixture
def good(tmp_path: Path) -> str:
    path = tmp_path / "firmware-7.tar.gz"
    path.write_bytes(archive(NEW_KERNEL))
    return str(path)


@pytest.fixture
def evil(tmp_path: Path) -> str:
    path = tmp_path / "evil.tar.gz"
    path.write_bytes(archive({"pnr/kernel": b"x", "../etc/passwd": b"x", "system.@system0.hostname": b""}))
    return str(path)


def test_check_lists_what_is_in_an_archive(ctl: Ctl, good: str) -> None:
    answer = ctl.json("firmware", "check", good)
    assert answer.code == 0
    assert answer.result["members"] == [{"path": "pnr/kernel", "kind": "file", "size": 11, "target": None}]
    assert answer.result["bytes"] == Path(good).stat().st_size
    assert len(answer.result["sha256"]) == 64


def test_check_tells_every_reason_to_refuse_an_archive(ctl: Ctl, evil: str) -> None:
    answer = ctl("firmware", "check", evil)
    assert answer.code == 10
    assert "../etc/passwd climbs out" in answer.err
    assert "system.@system0.hostname is what the card's shell" in answer.err


def test_check_names_a_file_that_cannot_be_read(ctl: Ctl) -> None:
    answer = ctl("firmware", "check", "/nowhere/firmware.tar.gz")
    assert answer.code == 10
    assert "cannot read /nowhere/firmware.tar.gz: No such file or directory" in answer.err


def test_upload_unpacks_and_installs_nothing(ctl: Ctl, scratch: Card, good: str) -> None:
    answer = ctl.json("firmware", "upload", good, "rack1")
    assert answer.code == 0
    assert answer.result["state"] == "unpacked"
    assert scratch.read("/tmp/upgrade/pnr/kernel") == "KERN-7.0.0\n"
    assert SENDS_THE_ARCHIVE not in scratch.commands()


def test_upgrade_shows_what_changed(ctl: Ctl, scratch: Card, good: str) -> None:
    answer = ctl.json("firmware", "upgrade", good, "rack1")
    assert answer.code == 0
    assert answer.result["verdict"] == "upgraded"
    assert answer.result["changes"] == [{"component": "kernel", "before": "KERN-6.1.0", "after": "KERN-7.0.0"}]


def test_upgrade_whose_script_fails_is_seen_by_the_versions(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.fail("fwupgrade")
    answer = ctl.json("firmware", "upgrade", good, "rack1")
    assert answer.code == 7
    assert answer.result["verdict"] == "unchanged"
    assert answer.result["category"] == "unchanged"


def test_upgrade_waits_for_the_end_of_the_script(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.hold("fwupgrade")
    running = ctl.start("-o", "json", "firmware", "upgrade", good, "rack1")
    scratch.wait_call("fwupgrade")
    assert running.poll() is None
    scratch.release("fwupgrade")
    out, _ = running.communicate(timeout=30)
    assert running.returncode == 0
    assert '"verdict": "upgraded"' in out


def test_upgrade_survives_a_daemon_that_is_restarted_meanwhile(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.hold("fwupgrade")
    running = ctl.start("-o", "json", "firmware", "upgrade", good, "rack1")
    scratch.wait_call("fwupgrade")
    scratch.write("/etc/pnr/kernel", "KERN-6.9.0\n")
    scratch.kill_daemon()
    out, _ = running.communicate(timeout=30)
    scratch.release("fwupgrade")
    assert running.returncode == 0
    assert '"after": "KERN-6.9.0"' in out


def test_many_cards_with_different_outcomes(ctl: Ctl, scratch: Card, rack: list[Card], good: str) -> None:
    other = rack[1]
    scratch.fail("fwupgrade")
    answer = ctl.json("firmware", "upgrade", good, "rack[1-2]")
    other.reset()
    assert answer.code == 8
    assert [result["verdict"] for result in answer.results] == ["unchanged", "upgraded"]


def test_no_card_hears_of_a_refused_archive(ctl: Ctl, rack: list[Card], evil: str) -> None:
    mark = rack[0].log_mark()
    answer = ctl("firmware", "upgrade", evil, "rack1")
    assert answer.code == 10
    assert rack[0].log_lines(since=mark) == []


def test_a_dry_run_sends_no_archive(ctl: Ctl, rack: list[Card], good: str) -> None:
    answer = ctl.json("--dry-run", "firmware", "upgrade", good, "rack1")
    assert answer.code == 0
    assert answer.result["verdict"] == "not sent"
    assert answer.result["bytes"].startswith("81c39aff 01010504 08000001 ")
    assert SENDS_THE_ARCHIVE not in rack[0].commands()


def test_a_card_that_cannot_unpack_refuses(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.fail("tar")
    answer = ctl.json("firmware", "upload", good, "rack1")
    assert answer.code == 3
    assert answer.result["phase"] == "waiting for the card to unpack"


def test_an_answer_in_the_middle_of_the_transfer_is_read(ctl: Ctl, scratch: Card, tmp_path: Path) -> None:
    path = tmp_path / "large.tar.gz"
    path.write_bytes(large_archive())
    scratch.run(["mkdir", "-p", "/tmp/upgrade/firmware.tar.gz"])  # the card cannot store the archive
    answer = ctl.json("firmware", "upload", str(path), "rack1")
    assert answer.code == 3
    assert answer.result["category"] == "refused-by-card"
