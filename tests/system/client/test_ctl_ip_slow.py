# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl ip set on a slow card: the verdict is the same"""

import pytest
from support.ctl import Answer, Ctl
from support.slow import slowed
from tarvelsim import Card

NEW = "10.0.1.77/24,10.0.1.1"
CHANGE = ("ip", "set", "--if", "VemkEth2", "--static", NEW)
PATIENT = ("--timeout", "60", *CHANGE)


@pytest.mark.parametrize("wait", ["0.5", "3", "10"])
def test_settings_that_the_network_does_not_follow_are_rolled_back(ctl: Ctl, scratch: Card, wait: str) -> None:
    former = scratch.inside.uci("get", "network.lanvemt2eth2.ipaddr")
    scratch.inside.fail("network")
    with slowed(scratch):
        answer = ctl.json(*PATIENT, "--wait", wait, "rack1")
    assert (answer.code, answer.result["state"]) == (7, "rolled back")
    assert scratch.inside.uci("get", "network.lanvemt2eth2.ipaddr") == former


def test_a_card_that_follows_is_seen_to_do_so(ctl: Ctl, scratch: Card) -> None:
    with slowed(scratch):
        answer = ctl.json(*PATIENT, "--wait", "60", "rack1")
    assert (answer.code, answer.result["state"]) == (0, "applied")


def test_a_change_that_comes_too_late_is_rolled_back(ctl: Ctl, scratch: Card) -> None:
    former = scratch.inside.uci("get", "network.lanvemt2eth2.ipaddr")
    scratch.inside.hold("network")
    running = ctl.start("-o", "json", *CHANGE, "--wait", "0.1", "rack1")
    assert running.stderr is not None
    assert any("rolling back" in line for line in running.stderr)
    scratch.inside.release("network")
    out, _ = running.communicate(timeout=60)
    assert running.returncode == 7
    assert '"state": "rolled back"' in out
    assert scratch.inside.uci("get", "network.lanvemt2eth2.ipaddr") == former


def test_what_only_the_other_interface_says_is_called_stored(ctl: Ctl, scratch: Card) -> None:
    with slowed(scratch):
        answer = ctl.json("-i", "lan0", *PATIENT, "rack1")
    assert (answer.code, answer.result["state"]) == (0, "stored")


def test_a_card_that_is_heard_no_more_is_lost_after_half_a_minute(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.hold("network")
    running = ctl.start("-o", "json", *CHANGE, "--wait", "0.1", "rack1")
    out, err = running.communicate(timeout=180)
    scratch.inside.release("network")
    answer = Answer(running.returncode, out, err)
    assert (answer.code, answer.result["state"], answer.result["changed"]) == (7, "lost", None)
    assert "did not take the former one either; try `tarvelctl ip rescue rack1`" in answer.result["hint"]
