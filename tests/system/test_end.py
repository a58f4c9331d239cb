# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How the daemon ends when it cannot start."""

import signal
from typing import Any

import pytest
from support.daemon import words
from tarvelsim import Card, Lan

ABORTED = -signal.SIGABRT


def lines_of(card: Card, mark: int) -> list[str]:
    return [f"{line.level} {line.text}" for line in card.records.log_lines(mark)]


def end_of(card: Card) -> int:
    """The exit status, or the number of the signal as a negative number."""
    end = card.daemon.wait_exit()
    return -end.signal if end.signal is not None else end.status or 0


def start_alone(lan: Lan, daemon: list[str], last: str, **differences: Any) -> int:
    """The end of a daemon that cannot start on a card of its own and logs `last` as its last line."""
    with lan.card("card2", command=daemon, autostart=False, supervised=False, **differences) as card:
        card.daemon.start(wait=False)
        end = end_of(card)
        card.records.wait_log(last.partition(" ")[2])
        assert lines_of(card, 0)[-1] == last
        return end


def test_second_daemon_on_a_card_is_aborted(card: Card, daemon: list[str]) -> None:
    mark = card.records.log_mark()
    done = card.inside.run(daemon, check=False)
    card.records.wait_log("Bind() failed", since=mark)
    assert done.returncode in (ABORTED, 128 + signal.SIGABRT)
    assert lines_of(card, mark)[-1] == f"warning Bind() failed: {words('Address already in use')}"


def test_second_daemon_does_not_disturb_the_first(card: Card, daemon: list[str]) -> None:
    before = card.daemon.pid
    card.inside.run(daemon, check=False)
    assert card.daemon.pid == before


@pytest.mark.parametrize("present", ["eth0", "eth1"])
def test_missing_device_aborts_the_start(lan: Lan, daemon: list[str], present: str) -> None:
    last = "warning BindToDevice() failed: No such device"
    assert start_alone(lan, daemon, last, devices=(present,)) == ABORTED


def test_missing_host_name_aborts_the_start(lan: Lan, daemon: list[str]) -> None:
    last = "info Working directory successfully changed to /tmp/upgrade"
    assert start_alone(lan, daemon, last, hostname=None) == ABORTED


def test_working_directory_that_is_a_file_ends_with_status_1(lan: Lan, daemon: list[str]) -> None:
    assert start_alone(lan, daemon, "warning chdir() failed: Not a directory", files={"/tmp/upgrade": ""}) == 1
