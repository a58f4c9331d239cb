# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Decoding: the bytes of messages in words."""

import subprocess
from pathlib import Path

import pytest
from support.ctl import Answer, Ctl
from wire import Command, request

REQUEST = request(Command.IP_GET, '<IpConfiguration From="me" To="card1"/>', sequence=0x2A)


def fields(answer: Answer) -> dict[str, object]:
    return {row["field"]: row["value"] for row in answer.result["fields"]}


def test_a_request_is_taken_apart(ctl: Ctl) -> None:
    answer = ctl.json("decode", REQUEST.hex())
    assert answer.code == 0
    assert fields(answer) == {
        "start pattern": "0xff9ac381",
        "version": "1",
        "message format": "0x01",
        "device": "5",
        "service": "4",
        "command": "3",
        "status": "0",
        "command version": "1",
        "sequence": "0x0000002a",
        "payload length": str(len(REQUEST) - 20),
        "8-bit section count": str(len(REQUEST) - 24),
        "text": '<IpConfiguration From="me" To="card1"/>',
    }


@pytest.mark.parametrize("dump", [["xxd"], ["xxd", "-p"], ["xxd", "-i"], ["hexdump", "-C"], ["od", "-t", "x1"]])
def test_dumps_are_read_from_a_file(ctl: Ctl, tmp_path: Path, dump: list[str]) -> None:
    try:
        text = subprocess.run(dump, input=REQUEST, capture_output=True, check=True).stdout
    except FileNotFoundError:
        pytest.skip(f"no {dump[0]}")
    (tmp_path / "dump").write_bytes(text)
    assert fields(ctl.json("decode", "--file", str(tmp_path / "dump")))["sequence"] == "0x0000002a"


def test_a_capture_may_hold_several_messages(ctl: Ctl, tmp_path: Path) -> None:
    (tmp_path / "capture").write_bytes(REQUEST + REQUEST)
    answer = ctl.json("decode", "--binary", "--file", str(tmp_path / "capture"))
    assert [result["target"] for result in answer.results] == ["message 1", "message 2"]


def test_a_table_has_a_line_for_each_line_of_the_text(ctl: Ctl) -> None:
    text = "<Versions>\n\t<Component/>\n</Versions>"
    lines = ctl("decode", request(Command.VERSIONS, text).hex()).out.splitlines()
    assert [line.split()[0] for line in lines[-2:]] == ["<Component/>", "</Versions>"]


def test_csv_has_a_line_for_each_field(ctl: Ctl) -> None:
    rows = ctl("-o", "csv", "decode", REQUEST.hex()).rows
    expected = {"offset": "8", "field": "command", "value": "3", "meaning": "IP configuration get, request"}
    assert expected.items() <= rows[5].items()


@pytest.mark.parametrize(
    ("words", "code", "category"),
    [
        (("decode", "81c"), 2, "usage"),
        (("decode", "zz"), 2, "usage"),
        (("decode", "--binary", "81"), 2, "usage"),
        (("decode", "81c39aff"), 4, "garbage"),
        (("decode", "00" * 20), 4, "garbage"),
        (("decode", REQUEST[:-1].hex()), 4, "garbage"),
        (("decode", "--file", "/nowhere"), 10, "bad-file"),
    ],
)
def test_what_is_no_message_is_refused(ctl: Ctl, words: tuple[str, ...], code: int, category: str) -> None:
    answer = ctl.json(*words)
    assert answer.code == code
    assert answer.result["category"] == category


def test_a_file_that_is_no_hexadecimal_is_a_bad_file(ctl: Ctl, tmp_path: Path) -> None:
    (tmp_path / "text").write_text("hello")
    answer = ctl("decode", "--file", str(tmp_path / "text"))
    assert answer.code == 10
    assert answer.err == 'error: bad-file while reading hexadecimal: line 1: "hello" is not hexadecimal\n'
