# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl firmware check, upload and upgrade"""

import subprocess
import tarfile
from pathlib import Path

import pytest
from support.archives import archive, archive_of_many, archive_of_one, large_archive
from support.ctl import Ctl
from tarvelsim import Card

NEW_KERNEL = {"pnr/kernel": b"KERN-7.0.0\n"}
MANY = 300_000
MOST_KIBIBYTES = 40 * 1024
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
    assert answer.result["members"] == [{"path": "pnr/kernel", "kind": "file", "size": 11, "link_target": None}]
    assert answer.result["bytes"] == Path(good).stat().st_size
    assert answer.result["unpacked_bytes"] == 11
    assert answer.result["ratio"] == pytest.approx(11 / answer.result["bytes"])
    assert len(answer.result["sha256"]) == 64
    assert "warning" not in answer.err


def test_check_tells_every_reason_to_refuse_an_archive(ctl: Ctl, evil: str) -> None:
    answer = ctl("firmware", "check", evil)
    assert answer.code == 10
    head, *problems = answer.err.splitlines()
    assert head.startswith("error: ")
    assert "bad-archive while checking the archive" in answer.err
    assert len(head) <= 80
    assert all(line.startswith("  ") for line in problems)
    assert "../etc/passwd climbs out" in answer.err
    assert "system.@system0.hostname is what the card's shell" in answer.err


@pytest.mark.parametrize("command", ["upload", "upgrade"])
def test_a_refused_archive_is_told_with_its_category_in_a_line_that_fits(ctl: Ctl, evil: str, command: str) -> None:
    answer = ctl("firmware", command, evil, "rack1")
    assert answer.code == 10
    head, hint = answer.err.splitlines()
    assert head == "error: bad-archive while checking the archive"
    assert "../etc/passwd climbs out" in hint


@pytest.mark.parametrize("kind", [tarfile.REGTYPE, tarfile.SYMTYPE], ids=["files", "links"])
def test_check_needs_little_memory_for_many_members(ctl: Ctl, tmp_path: Path, kind: bytes) -> None:
    if b"__asan_init" in ctl.program.read_bytes():
        pytest.skip("sanitizers need memory of their own")
    many = tmp_path / "many.tar.gz"
    many.write_bytes(archive_of_many(MANY, kind))
    output = tmp_path / "output"
    command = 'ulimit -d "$1" && exec "$2" -o "$3" firmware check "$4" >"$5"'
    for form in ("table", "csv", "json", "jsonl"):
        words = [str(MOST_KIBIBYTES), str(ctl.program), form, str(many), str(output)]
        done = subprocess.run(["sh", "-c", command, "sh", *words], env=ctl.environment, check=False)
        assert done.returncode == 0, form
        assert output.read_text().count("/member") == MANY, form


@pytest.mark.parametrize("mode", [0o4755, 0o2755], ids=["setuid", "setgid"])
def test_check_refuses_what_runs_as_another(ctl: Ctl, tmp_path: Path, mode: int) -> None:
    path = tmp_path / "setuid.tar.gz"
    path.write_bytes(archive_of_one("pnr/tool", mode=mode))
    answer = ctl("firmware", "check", str(path))
    assert answer.code == 10
    assert "pnr/tool has the setuid or setgid bit" in answer.err


@pytest.mark.parametrize("owner", [{"uid": 1000}, {"gid": 1000}], ids=["user", "group"])
def test_check_warns_of_foreign_owners(ctl: Ctl, tmp_path: Path, owner: dict[str, int]) -> None:
    path = tmp_path / "foreign.tar.gz"
    path.write_bytes(archive_of_one("pnr/tool", **owner))
    answer = ctl("firmware", "check", str(path))
    assert answer.code == 0
    assert "members that belong to others than root: 1, such as pnr/tool" in answer.err


def test_check_refuses_what_unpacks_to_more_than_it_may(ctl: Ctl, tmp_path: Path) -> None:
    zeros = tmp_path / "zeros.tar.gz"
    zeros.write_bytes(archive({"pnr/zeros": bytes(2 * 1024 * 1024)}))
    assert ctl("firmware", "check", str(zeros)).code == 0
    assert ctl("firmware", "check", "--max-size", "2", str(zeros)).code == 0
    answer = ctl.json("firmware", "check", "--max-size", "1", str(zeros))
    assert (answer.code, answer.result["category"]) == (10, "bad-archive")
    assert ctl("firmware", "upload", "--max-size", "1", str(zeros), "rack1").code == 10


def test_check_names_a_file_that_cannot_be_read(ctl: Ctl) -> None:
    answer = ctl("firmware", "check", "/nowhere/firmware.tar.gz")
    assert answer.code == 10
    assert "cannot read /nowhere/firmware.tar.gz: No such file or directory" in answer.err


def test_upload_unpacks_and_installs_nothing(ctl: Ctl, scratch: Card, good: str) -> None:
    answer = ctl.json("firmware", "upload", good, "rack1")
    assert answer.code == 0
    assert answer.result["state"] == "unpacked"
    assert scratch.inside.read("/tmp/upgrade/pnr/kernel") == "KERN-7.0.0\n"
    assert SENDS_THE_ARCHIVE not in scratch.records.commands()


def test_upgrade_shows_what_changed(ctl: Ctl, scratch: Card, good: str) -> None:
    answer = ctl.json("firmware", "upgrade", good, "rack1")
    assert answer.code == 0
    assert answer.result["verdict"] == "upgraded"
    assert answer.result["changes"] == [{"component": "kernel", "before": "KERN-6.1.0", "after": "KERN-7.0.0"}]


def test_upgrade_whose_script_fails_is_seen_by_the_versions(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.inside.fail("fwupgrade")
    answer = ctl.json("firmware", "upgrade", good, "rack1")
    assert answer.code == 7
    assert answer.result["verdict"] == "unchanged"
    assert answer.result["category"] == "unchanged"


def test_upgrade_waits_for_the_end_of_the_script(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.inside.hold("fwupgrade")
    running = ctl.start("-o", "json", "firmware", "upgrade", good, "rack1")
    scratch.records.wait_call("fwupgrade")
    assert running.poll() is None
    scratch.inside.release("fwupgrade")
    out, _ = running.communicate(timeout=30)
    assert running.returncode == 0
    assert '"verdict": "upgraded"' in out


def test_upgrade_survives_a_daemon_that_is_restarted_meanwhile(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.inside.hold("fwupgrade")
    running = ctl.start("-o", "json", "firmware", "upgrade", good, "rack1")
    scratch.records.wait_call("fwupgrade")
    scratch.inside.write("/etc/pnr/kernel", "KERN-6.9.0\n")
    scratch.daemon.kill()
    out, _ = running.communicate(timeout=30)
    scratch.inside.release("fwupgrade")
    assert running.returncode == 0
    assert '"after": "KERN-6.9.0"' in out


def test_many_cards_with_different_outcomes(ctl: Ctl, scratch: Card, rack: list[Card], good: str) -> None:
    other = rack[1]
    scratch.inside.fail("fwupgrade")
    answer = ctl.json("firmware", "upgrade", good, "rack[1-2]")
    other.reset()
    assert answer.code == 8
    assert [result["verdict"] for result in answer.results] == ["unchanged", "upgraded"]


def test_no_card_hears_of_a_refused_archive(ctl: Ctl, rack: list[Card], evil: str) -> None:
    mark = rack[0].records.log_mark()
    answer = ctl("firmware", "upgrade", evil, "rack1")
    assert answer.code == 10
    assert rack[0].records.log_lines(since=mark) == []


def test_a_dry_run_sends_no_archive(ctl: Ctl, rack: list[Card], good: str) -> None:
    answer = ctl.json("--dry-run", "firmware", "upgrade", good, "rack1")
    assert answer.code == 0
    assert answer.result["verdict"] == "not sent"
    assert answer.result["frame"].startswith("81c39aff 01010504 08000001 ")
    assert SENDS_THE_ARCHIVE not in rack[0].records.commands()


def test_a_card_that_cannot_unpack_refuses(ctl: Ctl, scratch: Card, good: str) -> None:
    scratch.inside.fail("tar")
    answer = ctl.json("firmware", "upload", good, "rack1")
    assert answer.code == 3
    assert answer.result["phase"] == "waiting for the card to unpack"


def test_an_answer_in_the_middle_of_the_transfer_is_read(ctl: Ctl, scratch: Card, tmp_path: Path) -> None:
    path = tmp_path / "large.tar.gz"
    path.write_bytes(large_archive())
    scratch.inside.run(["mkdir", "-p", "/tmp/upgrade/firmware.tar.gz"])  # the card cannot store the archive
    answer = ctl.json("firmware", "upload", str(path), "rack1")
    assert answer.code == 3
    assert answer.result["category"] == "refused-by-card"


def test_what_was_checked_is_what_every_card_gets(
    ctl: Ctl, scratches: list[Card], good: str, tmp_path: Path
) -> None:
    """Somebody puts another archive under the name while the first card of two installs it."""
    another = tmp_path / "another.tar.gz"
    another.write_bytes(archive({"pnr/kernel": b"KERN-6.6.6\n"}))
    first, second, _ = scratches
    first.inside.hold("fwupgrade")
    running = ctl.start("-o", "json", "firmware", "upgrade", "--batch", "1", good, "rack1", "rack2")
    first.records.wait_call("fwupgrade", timeout=60)
    another.rename(good)
    first.inside.release("fwupgrade")
    out, _ = running.communicate(timeout=120)
    assert running.returncode == 0, out
    assert second.inside.read("/etc/pnr/kernel") == "KERN-7.0.0\n"
