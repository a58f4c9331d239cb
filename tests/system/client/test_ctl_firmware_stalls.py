# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl firmware, when a card stalls or the user loses patience"""

import os
import signal
from collections.abc import Iterator
from pathlib import Path

import pytest
from support.archives import archive, large_archive
from support.ctl import Ctl, interrupt
from tarvelsim import Card


@pytest.fixture
def small(tmp_path: Path) -> str:
    path = tmp_path / "small.tar.gz"
    path.write_bytes(archive({"pnr/kernel": b"KERN-7.0.0\n"}))
    return str(path)


@pytest.fixture
def large(tmp_path: Path) -> str:
    path = tmp_path / "large.tar.gz"
    path.write_bytes(large_archive())
    return str(path)


@pytest.fixture
def stopped(scratch: Card) -> Iterator[Card]:
    """The first card of the rack, whose daemon accepts no connection and reads nothing."""
    process = scratch.daemon_pid
    assert process is not None
    os.kill(process, signal.SIGSTOP)
    yield scratch
    os.kill(process, signal.SIGCONT)


def test_a_card_that_takes_nothing_is_told_and_given_up(ctl: Ctl, stopped: Card, large: str) -> None:
    address = stopped.address("eth0") or ""
    answer = ctl("-o", "json", "firmware", "upload", "--patience", "4", large, address)
    assert answer.code == 5
    assert answer.result["category"] == "stalled"
    assert answer.result["phase"] == "sending the archive"
    assert "the transfer stalls" in answer.err


def test_a_stalled_card_does_not_delay_the_others(ctl: Ctl, stopped: Card, rack: list[Card], small: str) -> None:
    targets = [card.address("eth0") or "" for card in rack[:3]]
    answer = ctl.json("firmware", "upload", "--patience", "1", small, *targets)
    assert answer.code == 8
    assert [result["code"] for result in answer.results] == [5, 0, 0]
    for card in rack[1:3]:
        card.reset()


def test_ctrl_c_during_the_transfer_tells_that_nothing_was_installed(ctl: Ctl, stopped: Card, large: str) -> None:
    address = stopped.address("eth0") or ""
    running = ctl.start("-v", "firmware", "upload", "--patience", "60", large, address)
    assert running.stderr is not None
    assert any(f"{address} <- " in line for line in running.stderr)  # ends at the first frame that is sent
    answer = interrupt(running)
    assert answer.code == 130
    assert "nothing was installed; the card holds a partial archive" in answer.err


def test_ctrl_c_while_the_card_unpacks_tells_that_it_goes_on(ctl: Ctl, scratch: Card, small: str) -> None:
    scratch.hold("tar")
    running = ctl.start("firmware", "upgrade", small, "rack1")
    scratch.wait_call("tar")
    answer = interrupt(running)
    scratch.release("tar")
    assert answer.code == 130
    assert "the card has the whole archive: it unpacks and installs it all the same" in answer.err


def test_ctrl_c_while_the_card_upgrades_tells_that_it_goes_on(ctl: Ctl, scratch: Card, small: str) -> None:
    scratch.hold("fwupgrade")
    running = ctl.start("firmware", "upgrade", small, "rack1")
    scratch.wait_call("fwupgrade")
    answer = interrupt(running)
    scratch.release("fwupgrade")
    assert answer.code == 130
    assert "the card goes on with the upgrade all the same" in answer.err
