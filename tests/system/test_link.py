# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Cables with a loss, a latency and a rate. A tc of our own tells what it was asked for: few kernels here have netem."""

from collections.abc import Iterator
from pathlib import Path

import pytest
from support.bench import Bench
from tarvelsim import Card, Lan, Link, SimError

SHAPE = ("--loss", "5", "--latency", "20", "--rate", "1000")
QDISC = "qdisc add dev {} root netem delay 20ms loss 5% rate 1000kbit"


@pytest.fixture
def asked(tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> Path:
    """What was asked of tc, a line each, with the end of the network namespace's name before it."""
    program = tmp_path / "bin" / "tc"
    program.parent.mkdir()
    asked = tmp_path / "asked"
    program.write_text(f'#!/bin/sh\nwhile read -r line; do echo "$(readlink /proc/self/ns/net) $* $line" >>{asked}; done\n')
    program.chmod(0o755)
    monkeypatch.setenv("PATH", str(program.parent), prepend=":")
    return asked


@pytest.fixture
def own_bench(asked: Path, tmp_path: Path) -> Iterator[Bench]:
    (tmp_path / "t").mkdir()
    yield Bench(str(tmp_path / "t"))


def refuse(asked: Path, complaint: str) -> None:
    program = asked.parent / "bin" / "tc"
    program.write_text(f"#!/bin/sh\necho '{complaint}' >&2\nexit 1\n")


def test_both_ends_of_both_cables_are_shaped(lan: Lan, asked: Path) -> None:
    with lan.card("second", link=Link(loss=5, latency=20, rate=1000)) as card:
        lines = [line.split(" ", 1) for line in asked.read_text().splitlines()]
        its_network = Path(f"/proc/{card.init_pid}/ns/net").readlink()
        ports = [f"card{card.number}e{network}" for network in (0, 1)]
    here = str(Path("/proc/self/ns/net").readlink())
    wanted = [(here, port) for port in ports] + [(str(its_network), device) for device in ("eth0", "eth1")]
    assert lines == [[network, f"-batch - {QDISC.format(device)}"] for network, device in wanted]


def test_scripts_card_shapes_the_cables_of_all_cards(own_bench: Bench, asked: Path) -> None:
    with own_bench.running("--cards", "2", "--lans", "2", *SHAPE):
        devices = [line.split(" dev ")[1].split()[0] for line in asked.read_text().splitlines()]
    assert sorted(devices) == sorted(["card1e0", "card1e1", "card1e2", "card1e3"] + ["eth0", "eth1"] * 2)
    assert QDISC.format("card1e0") in asked.read_text()


@pytest.mark.parametrize("words", ["loss 5%", "delay 5ms", "rate 5kbit"])
def test_what_is_not_asked_for_is_left_alone(words: str) -> None:
    kind = {"loss": "loss", "delay": "latency", "rate": "rate"}[words.split()[0]]
    assert Link(**{kind: 5}).command("eth0") == f"qdisc add dev eth0 root netem {words}"


def test_perfect_cables_need_no_tc(lan: Lan, asked: Path) -> None:
    with lan.card("second"):
        assert not asked.exists()


@pytest.mark.parametrize(
    "complaint", ["Error: Specified qdisc kind is unknown.", "RTNETLINK answers: No such file or directory"]
)
def test_a_kernel_without_netem_is_told_with_the_cure(lan: Lan, asked: Path, complaint: str) -> None:
    refuse(asked, complaint)
    with pytest.raises(SimError, match="no netem .*modprobe sch_netem"):
        lan.card("second", link=Link(loss=5)).start()


def test_what_else_tc_refuses_is_told_in_its_words(lan: Lan, asked: Path) -> None:
    refuse(asked, "something else")
    with pytest.raises(SimError, match="tc: (.|\\n)*card(.|\\n)*: something else"):
        lan.card("second", link=Link(loss=5)).start()


def test_the_real_kernel_shapes_cables_or_says_what_is_missing(lan: Lan, card: Card) -> None:
    try:
        with lan.card("second", link=Link(latency=1)) as second:
            assert "delay 1ms" in second.inside.run(["tc", "qdisc", "show", "dev", "eth0"]).stdout
    except SimError as error:
        assert "the kernel of this machine has no netem" in str(error)
    assert card.running
