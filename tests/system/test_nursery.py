# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""All cards come from one process, and share its memory."""

from pathlib import Path

import pytest
from support.descriptors import descriptors
from support.processes import processes_running
from tarvelsim import Card, Lan, SimError
from tarvelsim.waiting import wait_for


def parent_of(card: Card) -> int:
    status = Path(f"/proc/{card.init_pid}/status").read_text(encoding="ascii")
    return int(status.split("PPid:")[1].split()[0])


def descriptors_of_daemon(card: Card) -> int:
    """How many it has, once it waits for clients: it takes no more then, and gives none back."""
    assert card.daemon.pid is not None
    return len(descriptors(card.daemon.pid))


def test_all_cards_come_from_one_process(lan: Lan, card: Card) -> None:
    with lan.card("second") as second, lan.card("third") as third:
        assert parent_of(second) == parent_of(third) == parent_of(card)


def test_card_that_cannot_boot_says_why_and_harms_no_other(lan: Lan, card: Card) -> None:
    with pytest.raises(SimError, match="does not boot: (.|\n)*FileNotFoundError"):
        lan.card("second", binds=["/nowhere"]).start()
    with lan.card("second") as second:
        assert (second.running, card.running) == (True, True)


def test_card_that_has_stopped_is_gone_with_all_of_its_processes(lan: Lan) -> None:
    with lan.card("second") as second:
        daemon = Path(f"/proc/{second.daemon.pid}")
        assert daemon.exists()
    assert not daemon.exists()
    assert not second.running


def test_daemon_of_a_new_card_has_nothing_of_the_process_that_made_it(lan: Lan) -> None:
    with lan.card("second") as second:
        of_the_first = descriptors_of_daemon(second)
        second.daemon.stop()
        second.daemon.start()
        assert of_the_first == descriptors_of_daemon(second)


def test_network_daemon_that_has_nothing_left_to_do_only_sleeps(scratch_card: Card) -> None:
    """It would be an interpreter of its own after each restart of the network otherwise."""
    scratch_card.inside.run(["/etc/init.d/network", "restart"])
    first = [scratch_card.init_pid]

    def sleeps() -> bool:
        interpreters = processes_running(scratch_card, "/usr/bin/python3")
        return bool(processes_running(scratch_card, "netifd")) and interpreters == first

    wait_for(sleeps, 120, lambda: "it is still something else")
