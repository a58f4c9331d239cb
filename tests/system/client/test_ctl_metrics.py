# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl metrics: what Prometheus gets to know, and what never leaves this machine for it."""

import os
import re
import socket
import stat
import subprocess
from pathlib import Path

import pytest
from support.ctl import Ctl, interrupt
from support.fake_card import FakeTcpCard, FakeUdpCard, answer
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Message
from wire.message import text_payload
from wire.numbers import PORT, Format, Status

SAMPLE = re.compile(r'(\w+)(?:\{(.*)\})? (-?[\d.]+(?:e[+-]?\d+)?)')


def samples(text: str) -> dict[str, float]:
    """By metric and labels, each of them once."""
    assert text.endswith("\n")
    lines = [line for line in text.splitlines() if not line.startswith("#")]
    matches = [SAMPLE.fullmatch(line) for line in lines]
    assert None not in matches, lines
    found = {f"{match[1]}{{{match[2] or ''}}}": float(match[3]) for match in matches if match}
    assert len(found) == len(lines)
    return found


def about(text: str, card: str) -> dict[str, float]:
    """The samples of one card, without its label."""
    label = f'card="{card}"'
    return {re.sub(f"{label},?", "", name): value for name, value in samples(text).items() if label in name}


def address_of(card: Card) -> str:
    return card.address("eth0") or ""


def note(ctl: Ctl, *lines: str) -> None:
    (ctl.config / "groups").write_text("".join(f"{line}\n" for line in lines))


def test_a_card_that_answers(ctl: Ctl, rack: list[Card]) -> None:
    note(ctl, f"rack1 {address_of(rack[0])}")
    told = ctl("metrics", "rack1")
    assert (told.code, told.err) == (0, "")
    values = about(told.out, "rack1")
    assert values["tarvel_up{}"] == 1
    assert values[f'tarvel_card_info{{address="{address_of(rack[0])}"}}'] == 1
    assert abs(values["tarvel_clock_skew_seconds{}"]) <= 5 * values["tarvel_clock_skew_error_seconds{}"]
    versions = ctl.json("versions", "rack1").result["components"]
    told_versions = {name for name in values if name.startswith("tarvel_component_info")}
    assert told_versions == {
        f'tarvel_component_info{{component="{row["component"]}",version="{row["version"]}"}}' for row in versions
    }


def test_a_silent_card_is_down_and_nothing_else_is_told_of_it(ctl: Ctl, rack: list[Card]) -> None:
    with FakeTcpCard(lambda request: None) as silent:
        note(ctl, f"rack1 {address_of(rack[0])}", f"card02 {silent.address}")
        told = ctl("--timeout", "3", "--retries", "0", "metrics", "card02", "rack1")
    assert told.code == 8
    assert about(told.out, "card02") == {
        "tarvel_up{}": 0,
        f'tarvel_failure_info{{address="{silent.address}",category="timeout"}}': 1,
    }
    assert about(told.out, "rack1")["tarvel_up{}"] == 1


def test_a_card_with_another_client_is_down(ctl: Ctl, rack: list[Card]) -> None:
    address = address_of(rack[0])
    mark = rack[0].records.log_mark()
    with socket.create_connection((address, PORT)):
        rack[0].records.wait_log("accept", since=mark)
        told = ctl("--timeout", "0.3", "--retries", "0", "metrics", address)
    assert (told.code, about(told.out, address)["tarvel_up{}"]) == (5, 0)


def test_a_card_that_refuses_its_time_is_up(ctl: Ctl) -> None:
    def respond(request: Message) -> bytes:
        if request.header.command == Command.VERSIONS:
            return answer(request, text_payload("<Versions></Versions>"), Format.SECTION_8)
        return answer(request, status=Status.FAILURE)

    with FakeTcpCard(respond) as card:
        told = ctl("metrics", card.address)
    assert told.code == 3
    assert about(told.out, card.address)["tarvel_up{}"] == 1
    assert "skew" not in told.out


def test_metrics_are_in_the_order_of_the_targets(ctl: Ctl, rack: list[Card]) -> None:
    addresses = [address_of(card) for card in reversed(rack)]
    told = ctl("metrics", *addresses)
    assert told.code == 0
    assert re.findall(r'^tarvel_up{card="(.*)"} 1$', told.out, re.MULTILINE) == addresses


def test_a_name_without_an_address_is_told_what_to_write(ctl: Ctl) -> None:
    note(ctl, "@all card[07-08]", "card08 127.0.0.99")
    told = ctl("metrics", "@all")
    assert told.code == 6
    assert "write this line there: card07 ADDRESS" in told.err
    assert about(told.out, "card07") == {
        "tarvel_up{}": 0,
        'tarvel_failure_info{address="",category="no-address"}': 1,
    }


def test_no_datagram_leaves_this_machine(ctl: Ctl, rack: list[Card]) -> None:
    note(ctl, f"rack1 {address_of(rack[0])}", "rack3 10.0.0.250")
    with FakeUdpCard(lambda request: []) as listener:
        assert ctl("--timeout", "3", "--retries", "0", "metrics", "rack[1-3]").code == 8
        assert listener.requests == []
        assert ctl("--timeout", "0.3", "--retries", "0", "status", "rack2").code in {0, 5}
        assert listener.requests != []


def test_one_card_under_two_words_is_asked_once(ctl: Ctl, rack: list[Card]) -> None:
    address = address_of(rack[0])
    note(ctl, f"rack1 {address}", f"@all rack1 {address}")
    told = ctl("metrics", "@all")
    assert told.code == 0
    assert f"warning: {address} is rack1: one card, asked once" in told.err
    assert about(told.out, "rack1")["tarvel_up{}"] == 1


def test_a_component_that_is_told_twice_is_one_sample(ctl: Ctl) -> None:
    twice = '<Versions><Component Id="a" Version="1"/><Component Id="a" Version="1"/></Versions>'

    def respond(request: Message) -> bytes:
        return answer(request, text_payload(twice), Format.SECTION_8)

    with FakeTcpCard(respond) as card:
        told = ctl("metrics", card.address)
    assert about(told.out, card.address)['tarvel_component_info{component="a",version="1"}'] == 1


def test_a_file_is_made_and_replaced(ctl: Ctl, rack: list[Card], tmp_path: Path) -> None:
    file = tmp_path / "tarvel.prom"
    file.write_text("former\n")
    former = file.open()
    told = ctl("metrics", address_of(rack[0]), "127.0.0.99", "--output", str(file))
    assert (told.code, told.out) == (8, "")
    assert former.read() == "former\n"
    assert about(file.read_text(), "127.0.0.99")["tarvel_up{}"] == 0
    assert stat.S_IMODE(file.stat().st_mode) == 0o644
    assert sorted(os.listdir(tmp_path)) == ["config", "tarvel.prom"]


@pytest.mark.parametrize("place", ["none/tarvel.prom", "config"])
def test_a_file_that_cannot_be_made_leaves_nothing_behind(ctl: Ctl, tmp_path: Path, place: str) -> None:
    told = ctl("metrics", "127.0.0.99", "--output", str(tmp_path / place))
    assert told.code == 10
    assert f"cannot write {tmp_path / place}" in told.err
    assert os.listdir(tmp_path) == ["config"]
    assert os.listdir(tmp_path / "config") == ["tarvelctl"]


def test_a_full_disk_leaves_the_former_file_alone(ctl: Ctl, tmp_path: Path) -> None:
    disk = tmp_path / "disk"
    disk.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=4k", "none", str(disk)], check=True)
    try:
        (disk / "tarvel.prom").write_text("former\n")
        told = ctl("metrics", "127.0.0.99", "--output", str(disk / "tarvel.prom"))
        assert told.code == 10
        assert "No space left on device" in told.err
        assert (disk / "tarvel.prom").read_text() == "former\n"
        assert os.listdir(disk) == ["tarvel.prom"]
    finally:
        subprocess.run(["umount", str(disk)], check=True)


def test_an_interrupted_run_leaves_the_former_file_alone(ctl: Ctl, tmp_path: Path) -> None:
    file = tmp_path / "tarvel.prom"
    file.write_text("former\n")
    with FakeTcpCard(lambda request: None) as card:
        running = ctl.start("--timeout", "60", "metrics", card.address, "--output", str(file))
        wait_for(lambda: bool(card.requests), 60, lambda: "the card is not asked")
        assert interrupt(running).code == 130
    assert file.read_text() == "former\n"


def test_a_format_and_a_file_are_one_too_many(ctl: Ctl, tmp_path: Path) -> None:
    told = ctl("-o", "json", "metrics", "127.0.0.99", "--output", str(tmp_path / "tarvel.prom"))
    assert told.code == 2
    assert told.result["category"] == "usage"
    assert not (tmp_path / "tarvel.prom").exists()


def test_json_is_that_of_other_commands(ctl: Ctl, rack: list[Card]) -> None:
    told = ctl("metrics", address_of(rack[0]), "-o", "json")
    assert told.result["address"] == address_of(rack[0])
    assert {"skew", "seconds", "components"} <= set(told.result)
