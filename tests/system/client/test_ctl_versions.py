# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl versions"""

from pathlib import Path

from support.ctl import Ctl
from support.fake_card import FakeTcpCard
from tarvelsim import Card

FACTORY = {
    "DravHardware": "DRAV-2001-03",
    "VemkHardware": "VEMK-1004-07",
    "BootLoader": "BOOT-3.2.1",
    "BaseSystem": "BASE-1.4.0",
    "application": "APPL-2.5.1",
    "kernel": "KERN-6.1.0",
}


def components(result: dict[str, object]) -> dict[str, str]:
    rows = result["components"]
    assert isinstance(rows, list)
    return {row["component"]: row["version"] for row in rows}


def test_a_card_is_asked_by_its_address(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("versions", rack[0].address("eth0") or "")
    assert answer.code == 0
    assert components(answer.result) == FACTORY


def test_a_card_is_asked_by_its_name(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("versions", "rack2")
    assert components(answer.result) == FACTORY
    assert answer.result["target"] == "rack2"


def test_the_table_has_a_line_for_each_component(ctl: Ctl, rack: list[Card]) -> None:
    lines = ctl("versions", "rack1").out.splitlines()
    assert lines[0].split() == ["TARGET", "COMPONENT", "VERSION"]
    assert [line.split()[1:] for line in lines[1:]] == [list(item) for item in FACTORY.items()]


def test_csv_has_the_same_lines(ctl: Ctl, rack: list[Card]) -> None:
    rows = ctl("-o", "csv", "versions", "rack1").rows
    assert {row["component"]: row["version"] for row in rows} == FACTORY


def test_json_lines_have_one_for_each_card(ctl: Ctl, rack: list[Card]) -> None:
    lines = ctl("-o", "jsonl", "versions", "rack[1-3]").out.splitlines()
    assert len(lines) == 3
    assert all('"schema":2' in line for line in lines)


def test_eight_cards_answer_at_once_in_the_order_asked(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.json("versions", "rack[1-8]")
    assert answer.code == 0
    assert [result["target"] for result in answer.results] == [f"rack{number}" for number in range(1, 9)]
    assert all(components(result) == FACTORY for result in answer.results)


def test_identical_answers_are_folded(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl.json("--fold", "versions", "rack[1-8]").result["target"] == "rack[1-8]"


def test_cards_with_the_same_versions_do_not_differ(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl("versions", "--diff", "rack[1-2]")
    assert (answer.code, answer.out) == (0, "TARGET  COMPONENT  VERSION\n")


def test_a_difference_is_shown_and_told(ctl: Ctl, rack: list[Card], scratch: Card) -> None:
    scratch.inside.write("/etc/pnr/kernel", "KERN-6.2.0\n")
    answer = ctl("-o", "csv", "versions", "--diff", "rack[1-2]")
    assert answer.code == 9
    assert [(row["target"], row["component"], row["version"]) for row in answer.rows] == [
        ("rack1", "kernel", "KERN-6.2.0"),
        ("rack2", "kernel", "KERN-6.1.0"),
    ]


def test_expected_versions_are_met(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    (tmp_path / "expected").write_text("# this year's\nkernel KERN-6.1.0\n")
    assert ctl("versions", "--expect", str(tmp_path / "expected"), "rack1").code == 0


def test_unexpected_versions_are_told(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    (tmp_path / "expected").write_text("kernel KERN-7.0.0\nBaseSystem BASE-1.4.0\n")
    answer = ctl("-o", "csv", "versions", "--expect", str(tmp_path / "expected"), "rack1")
    assert answer.code == 9
    assert [(row["component"], row["version"], row["expected"]) for row in answer.rows] == [
        ("kernel", "KERN-6.1.0", "KERN-7.0.0")
    ]


def test_an_unreadable_file_of_versions_is_exit_10(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    assert ctl("versions", "--expect", str(tmp_path / "none"), "rack1").code == 10


def test_a_version_that_breaks_the_xml_is_read_and_marked(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.write("/etc/pnr/kernel", 'KERN<"x&\n')
    answer = ctl.json("versions", "rack1")
    assert answer.code == 0
    assert components(answer.result)["kernel"] == 'KERN<"x&'
    assert answer.result["malformed"] is True
    assert "no valid XML" in answer.err


def test_a_group_is_read_from_the_users_file(ctl: Ctl, rack: list[Card]) -> None:
    (ctl.config / "groups").write_text(f"left {rack[0].address('eth0')}\n@both left rack2\n")
    answer = ctl.json("versions", "@both")
    assert [result["target"] for result in answer.results] == ["left", "rack2"]
    assert answer.code == 0


def test_targets_come_from_standard_input(ctl: Ctl, rack: list[Card]) -> None:
    assert len(ctl.json("versions", "-", input="rack1\nrack2\n").results) == 2


def test_frames_are_shown_on_demand(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl("-v", "versions", rack[0].address("eth0") or "")
    assert "<- 20 bytes: 81c39aff 01000504 01000001" in answer.err
    assert "81c39aff" not in answer.out


def test_a_dry_run_shows_the_request_and_sends_nothing(ctl: Ctl) -> None:
    with FakeTcpCard(lambda request: None) as card:
        answer = ctl.json("--dry-run", "versions", card.address)
    assert answer.result["frame"].startswith("81c39aff 01000504 01000001")
    assert card.requests == []
