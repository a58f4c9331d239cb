# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Two upgrades of one card from two runs of the client"""

import subprocess
from collections.abc import Iterator

import pytest
from support.ctl import Ctl
from tarvelsim import Card

pytestmark = pytest.mark.usefixtures("bystanders")


@pytest.fixture
def upgrading(ctl: Ctl, scratch: Card, firmware: str) -> Iterator[subprocess.Popen[str]]:
    """The first run, whose upgrade script waits until the test releases it."""
    scratch.inside.hold("fwupgrade")
    running = ctl.start("firmware", "upgrade", firmware, "rack1")
    scratch.records.wait_call("fwupgrade")
    yield running
    scratch.inside.release("fwupgrade")
    running.communicate(timeout=30)


def test_a_card_takes_no_other_upgrade_meanwhile(
    ctl: Ctl, scratch: Card, firmware: str, upgrading: subprocess.Popen[str]
) -> None:
    mark = scratch.records.calls_mark()
    second = ctl.json("--timeout", "1", "firmware", "upgrade", firmware, scratch.address("eth0") or "")
    assert second.result["category"] in ("timeout", "connect-timeout")  # whether it finds a place to wait or not
    assert second.result["changed"] is False
    assert scratch.records.calls("fwupgrade", since=mark) == []
    scratch.inside.release("fwupgrade")
    assert upgrading.wait(timeout=30) == 0


def test_the_script_of_a_killed_daemon_runs_beside_the_next(
    ctl: Ctl, scratch: Card, firmware: str, upgrading: subprocess.Popen[str]
) -> None:
    """What no client can see."""
    scratch.daemon.kill()
    _, told = upgrading.communicate(timeout=30)  # the card serves again
    assert upgrading.returncode == 7
    assert "or still runs because the daemon was restarted" in told
    mark = scratch.records.calls_mark()
    second = ctl.start("firmware", "upgrade", firmware, "rack1")
    scratch.records.wait_call("fwupgrade", since=mark)  # while the first is held
    scratch.inside.release("fwupgrade")
    second.communicate(timeout=30)
