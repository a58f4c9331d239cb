# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Settings that nobody asked for any more."""

from support.daemon import IS_HARDENED
from tarvelsim import Card


def test_settings_that_a_killed_daemon_has_left_staged(scratch_card: Card) -> None:
    scratch_card.daemon.supervise(False)
    scratch_card.daemon.stop()
    scratch_card.inside.write("/var/tarveld.staging", "")
    scratch_card.inside.uci("set", "network.lanvemt2eth2.ipaddr=6.6.6.6")
    scratch_card.daemon.start()
    assert ("6.6.6.6" in scratch_card.inside.uci("changes", "network")) != IS_HARDENED
    assert scratch_card.inside.exists("/var/tarveld.staging") != IS_HARDENED


def test_settings_that_somebody_else_has_staged_are_left_by_both_builds(scratch_card: Card) -> None:
    scratch_card.daemon.supervise(False)
    scratch_card.daemon.stop()
    scratch_card.inside.uci("set", "network.lanvemt2eth2.ipaddr=6.6.6.6")
    scratch_card.daemon.start()
    assert "6.6.6.6" in scratch_card.inside.uci("changes", "network")
