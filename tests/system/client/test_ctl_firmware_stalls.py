# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl firmware, when a card stalls or the user loses patience"""

import os
import socket
import subprocess
import threading
import time
from collections.abc import Iterator
from pathlib import Path

import pytest
from support import stopping
from support.archives import archive_of_zeros
from support.ctl import Ctl, interrupt
from support.fake_card import FakeTcpCard
from support.fake_card import answer as success
from tarvelsim import Card
from wire import HEADER_SIZE, Header, Message

VERSIONS_ASKED = "<- 20 bytes: 81c39aff 01000504 01000001"


def has_open(running: subprocess.Popen[str], path: Path) -> bool:
    descriptors = Path(f"/proc/{running.pid}/fd")
    return any(os.path.realpath(descriptor) == str(path) for descriptor in descriptors.iterdir())


@pytest.fixture
def stopped(scratch: Card) -> Iterator[Card]:
    """The first card of the rack, whose daemon accepts no connection and reads nothing."""
    with stopping.stopped(scratch):
        yield scratch


def test_a_card_that_takes_nothing_is_told_and_given_up(ctl: Ctl, stopped: Card, large: str) -> None:
    address = stopped.address("eth0") or ""
    answer = ctl("-o", "json", "firmware", "upload", "--patience", "4", large, address)
    assert answer.code == 5
    assert answer.result["category"] == "stalled"
    assert answer.result["phase"] == "sending the archive"
    assert "the transfer stalls" in answer.err


def test_a_stalled_card_does_not_delay_the_others(ctl: Ctl, stopped: Card, rack: list[Card], firmware: str) -> None:
    targets = [card.address("eth0") or "" for card in rack[:3]]
    answer = ctl.json("firmware", "upload", "--patience", "1", firmware, *targets)
    assert answer.code == 8
    assert [result["code"] for result in answer.results] == [5, 0, 0]
    for card in rack[1:3]:
        card.reset()


def wait_until_asked_for_versions(running: subprocess.Popen[str], times: int) -> None:
    assert running.stderr is not None
    asked = (line for line in running.stderr if VERSIONS_ASKED in line)
    for _ in range(times):
        next(asked)


def test_a_card_that_confirms_too_late_is_read_back(ctl: Ctl, scratch: Card, firmware: str) -> None:
    scratch.inside.hold("tar")
    running = ctl.start("-v", "firmware", "upgrade", "--patience", "5", firmware, scratch.address("eth0") or "")
    wait_until_asked_for_versions(running, 2)  # the second time because no confirmation came
    scratch.inside.release("tar")
    out, err = running.communicate(timeout=30)
    assert running.returncode == 0
    assert "upgraded" in out
    assert "the card did not confirm the archive in time, but has upgraded" in err


def test_a_card_that_confirms_nothing_and_upgrades_nothing_is_read_back(ctl: Ctl, scratch: Card, firmware: str) -> None:
    scratch.inside.hold("tar")
    running = ctl.start("-o", "json", "firmware", "upgrade", firmware, "rack1")
    scratch.records.wait_call("tar")
    scratch.daemon.kill()
    out, _ = running.communicate(timeout=30)
    scratch.inside.release("tar")
    assert running.returncode == 7
    assert '"verdict": "unchanged"' in out
    assert "the card did not confirm the archive" in out


def test_ctrl_c_during_the_transfer_tells_that_nothing_was_installed(ctl: Ctl, stopped: Card, large: str) -> None:
    address = stopped.address("eth0") or ""
    running = ctl.start("-v", "firmware", "upload", "--patience", "60", large, address)
    assert running.stderr is not None
    assert any(f"{address} <- " in line for line in running.stderr)  # ends at the first frame that is sent
    answer = interrupt(running)
    assert answer.code == 130
    assert "nothing is installed; the card may hold a part of it" in answer.err


def test_ctrl_c_while_the_card_unpacks_tells_that_it_may_go_on(ctl: Ctl, scratch: Card, firmware: str) -> None:
    scratch.inside.hold("tar")
    running = ctl.start("firmware", "upgrade", firmware, "rack1")
    scratch.records.wait_call("tar")
    answer = interrupt(running)
    scratch.inside.release("tar")
    assert answer.code == 130
    assert "the whole archive was sent: the card may unpack and install it all the same" in answer.err


def test_ctrl_c_while_the_card_upgrades_tells_that_it_goes_on(ctl: Ctl, scratch: Card, firmware: str) -> None:
    scratch.inside.hold("fwupgrade")
    address = scratch.address("eth0") or ""
    running = ctl.start("-v", "firmware", "upgrade", firmware, address)
    assert running.stderr is not None
    assert any(f"{address} -> " in line and " 088001" in line for line in running.stderr)  # it has unpacked the archive
    answer = interrupt(running)
    scratch.inside.release("fwupgrade")
    assert answer.code == 130
    assert "the card goes on with the upgrade all the same" in answer.err


def test_ctrl_c_while_the_archive_is_checked_tells_that_nothing_was_sent(ctl: Ctl, tmp_path: Path) -> None:
    path = tmp_path / "zeros.tar.gz"
    path.write_bytes(archive_of_zeros())
    with FakeTcpCard(lambda request: None) as card:
        running = ctl.start("firmware", "upgrade", str(path), card.address)
        while not has_open(running, path):
            time.sleep(0.001)
        answer = interrupt(running)
    assert answer.code == 130
    assert "nothing was sent" in answer.err
    assert card.requests == []


class HastyCard(FakeTcpCard):
    """Says success as soon as it has heard of an archive, and reads no more of it."""

    def _answer(self, connection: socket.socket) -> None:
        request = Message(Header.decode(connection.recv(HEADER_SIZE, socket.MSG_WAITALL)), b"")
        connection.sendall(success(request))
        self.gave_up.wait(60)  # a connection that closes with something unread may take the answer along

    gave_up = threading.Event()


def test_success_before_the_whole_archive_was_sent_is_none(ctl: Ctl, large: str) -> None:
    card = HastyCard(lambda request: None)
    with card:
        answer = ctl.json("firmware", "upload", large, card.address)
        card.gave_up.set()
    assert (answer.code, answer.result["category"]) == (4, "garbage")
