# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl firmware check --key"""

import hashlib
import re
import subprocess
import tarfile
from pathlib import Path

import pytest
from support.archives import archive, archive_of_many, name_of_many
from support.ctl import Answer, Ctl
from support.daemon import ROOT
from support.signing import Maker, changed

MANY = 300_000
MOST_KIBIBYTES = 40 * 1024
FILES = {"pnr/kernel": b"KERN-7.0.0\n", "./pnr/squashfs image": b"8.8"}


@pytest.fixture
def maker(tmp_path: Path) -> Maker:
    return Maker(tmp_path, "maker")


def packed(folder: Path, members: dict[str, bytes]) -> str:
    path = folder / "signed.tar.gz"
    path.write_bytes(archive(members))
    return str(path)


def test_check_with_a_key_accepts_what_it_has_signed(ctl: Ctl, tmp_path: Path, maker: Maker) -> None:
    path = packed(tmp_path, maker.archive(FILES))
    answer = ctl.json("firmware", "check", "--key", str(maker.public), path)
    assert answer.code == 0
    assert answer.result["signed_by"] == str(maker.public)
    assert f"{path}: signed by {maker.public}" in answer.err
    assert "signed_by" not in ctl.json("firmware", "check", path).result
    heading = "target,ok,code,category,changed,bytes,sha256,unpacked_bytes,ratio,signed_by,path,kind,size,link_target"
    assert ctl("-o", "csv", "firmware", "check", "--key", str(maker.public), path).out.splitlines()[0] == heading


@pytest.mark.parametrize(
    ("name", "content", "complaint"),
    [
        ("SHA256SUMS.sig", None, "it is not signed: it has no SHA256SUMS and SHA256SUMS.sig"),
        ("SHA256SUMS", None, "it is not signed: it has no SHA256SUMS and SHA256SUMS.sig"),
        ("SHA256SUMS", b"", "has not signed its SHA256SUMS"),
        ("SHA256SUMS.sig", b"no signature", "has not signed its SHA256SUMS"),
        ("pnr/kernel", b"evil", "pnr/kernel has another sum than in its SHA256SUMS"),
        ("pnr/kernel", None, "pnr/kernel is in its SHA256SUMS, but is no file in the archive"),
        ("pnr/planted", b"evil", "pnr/planted is not in its SHA256SUMS"),
    ],
    ids=["no signature", "no sums", "other sums", "broken signature", "changed file", "missing file", "added file"],
)
def test_check_with_a_key_names_what_its_maker_has_not_made_so(
    ctl: Ctl, tmp_path: Path, maker: Maker, name: str, content: bytes | None, complaint: str
) -> None:
    path = packed(tmp_path, changed(maker.archive(FILES), name, content))
    assert ctl("firmware", "check", path).code == 0
    answer = ctl.json("firmware", "check", "--key", str(maker.public), path)
    assert (answer.code, answer.result["category"], answer.result["signed_by"]) == (10, "bad-archive", None)
    assert complaint in answer.err


def test_check_with_a_key_refuses_firmware_of_another_maker(ctl: Ctl, tmp_path: Path, maker: Maker) -> None:
    path = packed(tmp_path, Maker(tmp_path, "other").archive(FILES))
    answer = ctl("firmware", "check", "--key", str(maker.public), path)
    assert answer.code == 10
    assert f"{maker.public} has not signed its SHA256SUMS" in answer.err


def test_check_needs_a_public_key(ctl: Ctl, tmp_path: Path, maker: Maker) -> None:
    path = packed(tmp_path, maker.archive(FILES))
    for key in (tmp_path / "maker.sec", tmp_path / "signed.tar.gz"):
        answer = ctl.json("firmware", "check", "--key", str(key), path)
        assert (answer.code, answer.result["category"]) == (10, "bad-file")
        assert f"{key} is no public key" in answer.err
    missing = ctl("firmware", "check", "--key", "/nowhere/key.pub", path)
    assert missing.code == 10
    assert "cannot read /nowhere/key.pub: No such file or directory" in missing.err


def test_check_with_a_key_needs_a_program_that_verifies(ctl: Ctl, tmp_path: Path, maker: Maker) -> None:
    path = packed(tmp_path, maker.archive(FILES))
    ctl.environment["PATH"] = str(tmp_path)
    answer = ctl("firmware", "check", "--key", str(maker.public), path)
    assert answer.code == 10
    assert "neither usign nor signify-openbsd is installed" in answer.err
    (tmp_path / "usign").write_bytes(Path("/usr/bin/signify-openbsd").read_bytes())
    (tmp_path / "usign").chmod(0o755)
    assert ctl("firmware", "check", "--key", str(maker.public), path).code == 0


def limited(ctl: Ctl, *words: str) -> Answer:
    """With the memory that it may take."""
    command = ["sh", "-c", 'ulimit -d "$1" && shift && exec "$@"', "sh", str(MOST_KIBIBYTES), str(ctl.program), *words]
    done = subprocess.run(command, env=ctl.environment, capture_output=True, text=True, check=False)
    return Answer(done.returncode, "", done.stderr)


@pytest.mark.parametrize("kind", [tarfile.REGTYPE, tarfile.SYMTYPE], ids=["files", "links"])
def test_check_with_a_key_needs_little_memory_for_many_members(
    ctl: Ctl, tmp_path: Path, maker: Maker, kind: bytes
) -> None:
    if b"__asan_init" in ctl.program.read_bytes():
        pytest.skip("sanitizers need memory of their own")
    lines = [f"{hashlib.sha256(b'').hexdigest()}  {name_of_many(index)}\n" for index in range(MANY)]
    refusals = {MANY: "is no plain file of at most 4194304 bytes", 40_000: f"member{40_000:06} is not in its SHA256SUMS"}
    for listed, refusal in refusals.items():
        sums = "".join(lines[:listed]).encode()
        path = tmp_path / "many.tar.gz"
        signed = {"SHA256SUMS": sums, "SHA256SUMS.sig": maker.sign(sums)}
        path.write_bytes(archive_of_many(MANY, kind, signed))
        answer = limited(ctl, "--quiet", "firmware", "check", "--key", str(maker.public), str(path))
        assert answer.code == 10
        assert refusal in answer.err


def test_check_with_a_key_leaves_nothing_behind(ctl: Ctl, tmp_path: Path, maker: Maker) -> None:
    path = packed(tmp_path, maker.archive(FILES))
    temporary = tmp_path / "temporary"
    temporary.mkdir()
    ctl.environment["TMPDIR"] = str(temporary)
    assert ctl("firmware", "check", "--key", str(maker.public), path).code == 0
    assert list(temporary.iterdir()) == []


def test_the_documented_lines_make_what_check_accepts(ctl: Ctl, tmp_path: Path, maker: Maker) -> None:
    """With a link, a name with a blank, and a directory below another."""
    firmware = tmp_path / "firmware"
    (firmware / "pnr/more").mkdir(parents=True)
    (firmware / "pnr/kernel").write_bytes(b"KERN-7.0.0\n")
    (firmware / "pnr/more/a b").write_bytes(b"")
    (firmware / "pnr/link").symlink_to("more/a b")
    text = (ROOT / "SECURITY.md").read_text(encoding="utf-8")
    sums, sign = re.findall(r"^    (find .*|usign -S .*)$", text, re.MULTILINE)
    script = f"{sums}\n{sign}\n".replace("usign", "signify-openbsd").replace("maker.sec", str(maker.secret))
    subprocess.run(["sh", "-euc", script], cwd=firmware, check=True)
    path = tmp_path / "signed.tar.gz"
    subprocess.run(["tar", "-czf", path, "--owner=0", "--group=0", "-C", firmware, "."], check=True)
    answer = ctl("firmware", "check", "--key", str(maker.public), str(path))
    assert answer.code == 0, answer.err
