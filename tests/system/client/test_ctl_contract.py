# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The contract with scripts: exit codes, streams and formats."""

import ast
import itertools
import json
import re
import subprocess
import time
from pathlib import Path
from typing import Any

import pytest
from support.ctl import Ctl
from support.fake_card import FakeTcpCard
from tarvelsim import Card
from wire import HEADER_SIZE, Header, Message, golden


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


def commands(ctl: Ctl, *group: str) -> list[tuple[str, ...]]:
    """All that the help lists, those of groups with both words."""
    listed = ctl(*group, "--help").out.partition("Subcommands:\n")[2].partition("\n\n")[0]
    names = re.findall(r"^  (\S+) ", listed, re.MULTILINE)
    return [command for name in names for command in commands(ctl, *group, name)] or [group]


def literals_given_to_the_client() -> list[str]:
    """Of each call of `ctl` in the tests beside this one: its literal arguments, each with a blank on both sides."""
    trees = (ast.parse(path.read_text(encoding="utf-8")) for path in Path(__file__).parent.glob("test_*.py"))
    calls = (node for tree in trees for node in ast.walk(tree) if isinstance(node, ast.Call))
    to_ctl = (call for call in calls if ast.unparse(call.func).partition(".")[0] == "ctl")
    return ["".join(f" {arg.value} " for arg in call.args if isinstance(arg, ast.Constant)) for call in to_ctl]


def test_every_command_is_run_by_a_test(ctl: Ctl) -> None:
    given = literals_given_to_the_client()
    listed = ["".join(f" {word} " for word in command) for command in commands(ctl)]
    assert " ip  rescue " in listed
    assert [command for command in listed if not any(command in words for words in given)] == []


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
    assert set(result) == {"target", "ok", "code", "category", "phase", "hint", "changed"}
    assert result["ok"] is False
    assert all(isinstance(result[field], str) for field in ("target", "category", "phase", "hint"))


def test_json_lines_carry_failures_too(ctl: Ctl) -> None:
    line = json.loads(ctl("-o", "jsonl", "versions", "127.0.0.99").out)
    assert (line["schema"], line["command"], line["code"]) == (2, "versions", 6)


def test_a_failure_leaves_no_data_in_a_table(ctl: Ctl) -> None:
    answer = ctl("versions", "127.0.0.99")
    assert answer.out == "TARGET  COMPONENT  VERSION\n"
    assert answer.err.startswith("error: 127.0.0.99: refused")


def test_a_failure_is_a_row_of_csv(ctl: Ctl) -> None:
    (row,) = ctl("-o", "csv", "versions", "127.0.0.99").rows
    assert (row["target"], row["ok"], row["code"], row["category"]) == ("127.0.0.99", "no", "6", "refused")


def examples(ctl: Ctl, command: tuple[str, ...], address: str) -> list[list[str]]:
    """What the help shows of a command alone, of cards of the rack, in no format of its own and to no file."""
    shown = re.findall(r"^  tarvelctl ([^|<>\n]+)$", ctl(*command, "--help").out, re.MULTILINE)
    places = {r"card\[.*\]": "rack[1-2]", r"card\d+": "rack1", r"10\.0\.0\.\d+": address, "eth0": "lan0"}
    lines = []
    for line in shown:
        words = re.sub(r"-o \w+ |--dry-run | --output \S+", "", line).split()
        for theirs, ours in places.items():
            words = [re.sub(f"^{theirs}$", ours, word) for word in words]
        lines.append(words)
    return lines


def is_a_question(result: dict[str, Any]) -> bool:
    """Was nothing held back in a dry run but what changes no card?"""
    return "frame" not in result or Header.decode(bytes.fromhex(result["frame"])[:HEADER_SIZE]).command in golden.READING


def fields_of(result: dict[str, Any]) -> set[str]:
    lists = [name for name, value in result.items() if isinstance(value, list)]
    fields = {field for name in lists for row in result[name] for field in row}
    return fields | set(result) - set(lists) - {"phase", "hint"}


def test_every_field_of_json_has_a_column(
    ctl: Ctl, rack: list[Card], firmware: str, tmp_path: Path, monkeypatch: pytest.MonkeyPatch
) -> None:
    monkeypatch.chdir(tmp_path)  # where the files of the examples are
    (tmp_path / "release.txt").write_text("kernel KERN-6.1.0\n")
    (tmp_path / "time.xml").write_text("<TimeReferenceConfiguration/>")
    ctl.remember("ip-rack1", f"VemkEth1 Static ={rack[0].address('eth0')} =255.255.255.0 - 7\n")
    asked = set()
    for command in commands(ctl):
        for words in examples(ctl, command, rack[0].address("eth0") or ""):
            ways: list[tuple[str, ...]] = [("--dry-run",)]
            if all(is_a_question(result) for result in ctl.json("--dry-run", *words).results):
                ways.append(())
                asked.add(command)
            for way in ways:
                columns = set(ctl("-o", "csv", *way, *words).out.partition("\n")[0].split(","))
                answer = ctl.json(*way, *words)
                assert answer.code == 0, (way, words, answer.out)
                for result in answer.results:
                    assert result["changed"] is False, (way, words, result)
                    assert fields_of(result) <= columns, (way, words)
    assert {("time", "get"), ("firmware", "check")} <= asked
    assert ("time", "set") not in asked


def test_columns_are_chosen(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl("-o", "csv", "--columns", "code,target", "status", "rack1", "127.0.0.99")
    assert answer.out == "code,target\n0,rack1\n6,127.0.0.99\n"


@pytest.mark.parametrize(("output", "columns"), [("table", "colour"), ("table", ""), ("json", "target"), ("json", "")])
def test_columns_that_are_none_are_refused_before_anything_is_sent(ctl: Ctl, output: str, columns: str) -> None:
    with FakeTcpCard(lambda request: None) as card:
        assert ctl("-o", output, "--columns", columns, "status", card.address).code == 2
    assert card.requests == []


def test_a_row_too_wide_for_a_line_is_printed_as_a_block(ctl: Ctl, rack: list[Card]) -> None:
    lines = ctl("--dry-run", "ip", "set", "--if", "VemkEth2", "--disabled", "rack[1-2]").out.splitlines()
    assert [line.split() for line in lines if line.startswith("TARGET")] == [["TARGET", "rack1"], ["TARGET", "rack2"]]
    assert "" in lines


def test_quiet_drops_the_notes(ctl: Ctl, rack: list[Card]) -> None:
    assert "have the same versions" in ctl("versions", "--diff", "rack[1-2]").err
    assert ctl("--quiet", "versions", "--diff", "rack[1-2]").err == ""


@pytest.mark.parametrize("format", ["table", "csv", "json", "jsonl"])
def test_a_reader_that_goes_away_is_no_error(ctl: Ctl, rack: list[Card], format: str) -> None:
    running = ctl.start("-o", format, "versions", "rack[1-8]")
    assert running.stdout and running.stderr
    running.stdout.close()
    assert running.stderr.read() == ""
    assert running.wait(timeout=30) == 0


def test_messages_that_nobody_reads_stop_nothing(ctl: Ctl) -> None:
    running = ctl.start("-o", "jsonl", "-v", "versions", "127.0.0.[98-99]")
    assert running.stdout and running.stderr
    running.stderr.close()
    assert len(running.stdout.read().splitlines()) == 2
    assert running.wait(timeout=30) == 6


def test_a_time_that_is_none_is_told_by_what_is_wrong(ctl: Ctl) -> None:
    for text, flaw in (("2026-02-30T00:00:00Z", "date"), ("2026-02-03T00:00:00 CET", "zone")):
        answer = ctl("time", "set", "--manual", text, "127.0.0.99")
        assert answer.code == 2
        assert flaw in answer.err


def test_a_dry_run_of_a_raw_command_shows_its_own_frame(ctl: Ctl) -> None:
    for words in ((), ("--udp",)):
        answer = ctl.json("--dry-run", "raw", "--command", "9", *words, "card1")
        assert answer.code == 0
        assert answer.result["frame"].split()[2] == "09000001"


def test_a_connection_that_closes_is_tried_again_after_a_pause(ctl: Ctl) -> None:
    times: list[float] = []

    def close(request: Message) -> bytes:
        times.append(time.monotonic())
        return b""

    with FakeTcpCard(close) as card:
        assert ctl("versions", card.address).code == 5
    assert len(times) == 3
    # a lower bound, which no slow machine breaks
    assert all(later - earlier >= 0.3 for earlier, later in itertools.pairwise(times))


def test_a_request_is_one_segment_without_payload(ctl: Ctl) -> None:
    with FakeTcpCard(lambda request: None) as card:
        ctl("--timeout", "0.3", "versions", card.address)
        ctl("--timeout", "0.3", "time", "get", card.address)
    assert [len(request.payload) for request in card.requests] == [0, 0]
