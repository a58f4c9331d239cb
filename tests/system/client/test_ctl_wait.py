# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl wait, and firmware in batches"""

import socket
from collections.abc import Iterator
from contextlib import contextmanager

from support.ctl import Ctl, interrupt
from tarvelsim import Card
from wire import request
from wire.numbers import PORT, Command


@contextmanager
def occupied(card: Card) -> Iterator[str]:
    """The address of the card, which serves somebody else, with room for one who waits."""
    address = card.address("eth0") or ""
    with socket.create_connection((address, PORT)) as connection:
        connection.sendall(request(Command.VERSIONS))
        assert connection.recv(1)
        yield address


def test_a_busy_card_is_up(ctl: Ctl, rack: list[Card]) -> None:
    with occupied(rack[0]) as address:
        assert ctl.json("wait", "--for", "up", address).code == 0


def test_a_busy_card_is_not_idle(ctl: Ctl, rack: list[Card]) -> None:
    with occupied(rack[0]) as address:
        answer = ctl.json("--timeout", "1", "wait", "--for", "idle", "--wait-time", "0.5", address)
    assert (answer.code, answer.result["state"]) == (5, "busy")


def test_a_busy_card_is_waited_for_until_it_is_idle(ctl: Ctl, rack: list[Card]) -> None:
    with occupied(rack[0]) as address:
        waiting = ctl.start("-v", "-o", "json", "wait", "--for", "idle", address)
        assert waiting.stderr is not None
        assert any(f"{address} <- " in line for line in waiting.stderr)  # it has looked, and was not answered
        assert waiting.poll() is None
    out, _ = waiting.communicate(timeout=60)
    assert waiting.returncode == 0
    assert '"state": "up and idle"' in out


def test_a_card_that_reboots_is_waited_for(ctl: Ctl, scratch: Card) -> None:
    assert ctl("reboot", "--wait", "rack1").code == 0
    assert ctl.json("wait", "--for", "idle", "rack1").result["state"] == "up and idle"


def test_many_are_waited_for_at_once(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[0].address("eth0") or ""
    running = ctl.start("-o", "jsonl", "--parallel", "1", "wait", "--for", "up", "127.0.0.99", address)
    assert running.stdout
    assert f'"target":"{address}"' in running.stdout.readline()
    interrupt(running)


def test_a_batch_with_a_failure_is_the_last(ctl: Ctl, scratches: list[Card], firmware: str) -> None:
    scratches[0].inside.fail("fwupgrade")
    answer = ctl.json("firmware", "upgrade", "--batch", "1", firmware, "rack[1-3]")
    assert answer.code == 7
    assert [result["category"] for result in answer.results] == ["unchanged", "untouched", "untouched"]
    assert [result["changed"] for result in answer.results[1:]] == [False, False]
    kernel = {"component": "kernel", "version": "KERN-6.1.0"}
    assert all(kernel in result["components"] for result in ctl.json("versions", "rack[2-3]").results)
