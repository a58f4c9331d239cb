# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The contract with scripts: exit codes, streams and formats."""

import json
import subprocess

import pytest
from support.ctl import Ctl
from support.fake_card import FakeTcpCard
from tarvelsim import Card


@pytest.mark.parametrize("words", [(), ("nonsense",), ("versions",), ("-o", "xml", "versions", "rack1"), ("time",)])
def test_a_wrong_command_line_is_exit_2(ctl: Ctl, words: tuple[str, ...]) -> None:
    answer = ctl(*words)
    assert (answer.code, answer.out) == (2, "")
    assert answer.err.startswith("error: ")


def test_help_and_version_are_exit_0(ctl: Ctl) -> None:
    for words in (("--help",), ("--version",), ("ip", "set", "--help")):
        answer = ctl(*words)
        assert answer.code == 0
        assert answer.out
        assert answer.err == ""


def test_a_usage_error_is_json_too(ctl: Ctl) -> None:
    answer = ctl.json("versions")
    assert answer.code == 2
    assert answer.document["command"] == "versions"
    assert answer.result["category"] == "usage"


def test_a_usage_error_without_a_command_names_none(ctl: Ctl) -> None:
    assert ctl.json("nonsense").document["command"] is None


def test_a_wrong_groups_file_is_exit_10(ctl: Ctl) -> None:
    (ctl.config / "groups").write_text("card01 nowhere\n")
    assert ctl("versions", "card01").code == 10


def test_data_that_cannot_be_written_is_exit_1(ctl: Ctl) -> None:
    with open("/dev/full", "w", encoding="ascii") as full:
        ended = subprocess.run([str(ctl.program), "--help"], stdout=full, stderr=subprocess.PIPE, text=True, check=False)
    assert ended.returncode == 1
    assert ended.stderr.startswith("error: internal error: cannot write the output")


@pytest.mark.parametrize("words", [("-o", "json"), ("-ojson",), ("--output", "json"), ("--output=json",)])
def test_a_broken_command_line_is_answered_in_the_format_asked_for(ctl: Ctl, words: tuple[str, ...]) -> None:
    assert ctl(*words, "versions").result["category"] == "usage"


def test_silence_is_exit_5_and_names_its_causes(ctl: Ctl) -> None:
    answer = ctl("--timeout", "0.3", "ip", "get", "nobody")
    assert answer.code == 5
    for cause in ("name", "router", "firewall"):
        assert cause in answer.err


def test_no_answer_on_a_connection_is_exit_5(ctl: Ctl) -> None:
    with FakeTcpCard(lambda request: None) as card:
        assert ctl("--timeout", "0.3", "versions", card.address).code == 5


def test_a_refused_connection_is_exit_6(ctl: Ctl) -> None:
    answer = ctl.json("versions", "127.0.0.99")
    assert (answer.code, answer.result["category"]) == (6, "refused")


def test_targets_that_failed_alike_have_their_code(ctl: Ctl) -> None:
    assert ctl("versions", "127.0.0.98", "127.0.0.99").code == 6


def test_targets_with_different_outcomes_are_exit_8(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("versions", "rack1", "127.0.0.99")
    assert answer.code == 8
    assert [result["code"] for result in answer.results] == [0, 6]


def test_an_internal_error_at_one_target_costs_no_other_its_result(ctl: Ctl) -> None:
    few_files = ["prlimit", "--nofile=16", str(ctl.program), "-o", "json", "versions", "127.0.0.[1-30]"]
    ended = subprocess.run(few_files, capture_output=True, text=True, check=False)
    codes = {result["code"] for result in json.loads(ended.stdout)["results"]}
    assert ended.returncode == 8
    assert codes == {1, 6}


def test_every_failure_has_the_same_fields(ctl: Ctl) -> None:
    result = ctl.json("versions", "127.0.0.99").result
    assert set(result) == {"target", "ok", "code", "category", "phase", "hint"}
    assert result["ok"] is False
    assert all(isinstance(result[field], str) for field in ("target", "category", "phase", "hint"))


def test_json_lines_carry_failures_too(ctl: Ctl) -> None:
    line = json.loads(ctl("-o", "jsonl", "versions", "127.0.0.99").out)
    assert (line["schema"], line["command"], line["code"]) == (1, "versions", 6)


def test_a_failure_leaves_no_data_in_a_table(ctl: Ctl) -> None:
    answer = ctl("versions", "127.0.0.99")
    assert answer.out == ""
    assert answer.err.startswith("error: 127.0.0.99: refused")


def test_a_row_too_wide_for_a_line_is_printed_as_a_block(ctl: Ctl, rack: list[Card]) -> None:
    lines = ctl("--dry-run", "ip", "set", "--if", "VemkEth2", "--disabled", "rack[1-2]").out.splitlines()
    assert [line.split() for line in lines if line.startswith("TARGET")] == [["TARGET", "rack1"], ["TARGET", "rack2"]]
    assert "" in lines


def test_quiet_drops_the_notes(ctl: Ctl, rack: list[Card]) -> None:
    assert "have the same versions" in ctl("versions", "--diff", "rack[1-2]").err
    assert ctl("--quiet", "versions", "--diff", "rack[1-2]").err == ""


def test_a_closed_output_is_no_crash(ctl: Ctl, rack: list[Card]) -> None:
    running = ctl.start("versions", "rack[1-8]")
    assert running.stdout
    running.stdout.close()
    assert running.wait(timeout=30) in (0, 1)


def test_a_request_is_one_segment_without_payload(ctl: Ctl) -> None:
    with FakeTcpCard(lambda request: None) as card:
        ctl("--timeout", "0.3", "versions", card.address)
        ctl("--timeout", "0.3", "time", "get", card.address)
    assert [len(request.payload) for request in card.requests] == [0, 0]
