# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl on a terminal: progress, and the question before several cards are changed."""

import re
import signal

import pytest
from support.ctl import Ctl
from support.terminal import on_terminal
from tarvelsim import Card


def kernels(ctl: Ctl) -> list[str]:
    results = ctl.json("versions", "rack[1-2]").results
    return [row["version"] for one in results for row in one["components"] if row["component"] == "kernel"]


def test_the_lookup_of_names_shows_its_seconds(ctl: Ctl, rack: list[Card]) -> None:
    session = on_terminal(ctl, "--timeout", "1.5", "versions", "nobody[1-2]", "rack1")
    shown = re.compile(r"[01] of 3 done, slowest nobody1, looking for the card \d+ s")
    assert any(shown.fullmatch(line) for line in session.redrawn)


def test_progress_is_cut_to_the_terminal(ctl: Ctl, rack: list[Card]) -> None:
    session = on_terminal(ctl, "--timeout", "0.5", "versions", "nobody[1-2]", columns=40)
    shown = {line for line in session.redrawn if "of 2 done" in line}
    assert shown == {"0 of 2 done, slowest nobody1, lookin..."}


def test_progress_is_drawn_at_most_ten_times_a_second(ctl: Ctl, scratches: list[Card], large: str) -> None:
    session = on_terminal(ctl, "--yes", "firmware", "upload", large, "rack[1-2]")
    assert session.code == 0
    drawn = [line for line in session.redrawn if re.search(r"\d s($|,)", line)]
    assert 0 < len(drawn) <= 10 * session.seconds + 1


def test_quiet_means_no_progress(ctl: Ctl, rack: list[Card]) -> None:
    assert "done, slowest" not in on_terminal(ctl, "-q", "--timeout", "0.5", "versions", "rack1", "nobody").shown


def test_several_cards_are_changed_only_after_a_yes(ctl: Ctl, scratches: list[Card], firmware: str) -> None:
    refused = on_terminal(ctl, "firmware", "upgrade", firmware, "rack[1-2]", says="n\n")
    assert refused.code == 2
    assert f"firmware upgrade of 2 cards with {firmware}" in refused.shown
    assert re.search(r"  rack\[1-2\]: .*kernel KERN-6\.1\.0", refused.shown)
    assert "Go on? [y/N]" in refused.shown
    assert kernels(ctl) == ["KERN-6.1.0"] * 2
    assert on_terminal(ctl, "firmware", "upgrade", firmware, "rack[1-2]", says="y\n").code == 0
    assert kernels(ctl) == ["KERN-7.0.0"] * 2


def test_a_plan_that_takes_its_time_is_told(ctl: Ctl, scratch: Card, rack: list[Card], firmware: str) -> None:
    scratch.daemon.kill(signal.SIGSTOP)
    try:
        targets = (scratch.address("eth0") or "", rack[1].address("eth0") or "")
        session = on_terminal(ctl, "--timeout", "1.5", "firmware", "upgrade", firmware, *targets, says="n\n")
    finally:
        scratch.daemon.kill(signal.SIGCONT)
    assert any(re.fullmatch(r"looking at what they have \d+ s", line) for line in session.redrawn)
    assert "Go on? [y/N]" in session.shown


def test_ctrl_c_is_no_answer(ctl: Ctl, rack: list[Card], firmware: str) -> None:
    session = on_terminal(ctl, "firmware", "upgrade", firmware, "rack[1-2]", interrupt_at="Go on? [y/N]")
    assert session.code == 130
    assert "interrupted; nothing was sent" in session.shown
    assert kernels(ctl) == ["KERN-6.1.0"] * 2


@pytest.mark.parametrize("words", [["--yes", "rack[1-2]"], ["rack1"], ["--dry-run", "rack[1-2]"]])
def test_nothing_is_asked_where_it_is_plain(ctl: Ctl, scratches: list[Card], firmware: str, words: list[str]) -> None:
    session = on_terminal(ctl, "firmware", "upgrade", firmware, *words)
    assert session.code == 0
    assert "[y/N]" not in session.shown


def test_without_a_terminal_nothing_is_asked(ctl: Ctl, scratches: list[Card], firmware: str) -> None:
    answer = ctl("firmware", "upgrade", firmware, "rack[1-2]")
    assert answer.code == 0
    assert "[y/N]" not in answer.err
