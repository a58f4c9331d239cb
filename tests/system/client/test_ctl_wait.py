# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl wait, and firmware in batches"""

import socket
from collections.abc import Iterator
from contextlib import contextmanager

import pytest
from support.ctl import Ctl, interrupt
from support.fake_card import FakeUdpCard, answer
from support.stopping import stopped
from tarvelsim import Card
from wire import Message, request, text_payload
from wire.numbers import PORT, Command, Format


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
        waited = ctl.json("--timeout", "1", "wait", "--for", "idle", "--wait-time", "0.5", address)
    assert (waited.code, waited.result["state"]) == (5, "busy")


def test_a_busy_card_is_waited_for_until_it_is_idle(ctl: Ctl, rack: list[Card]) -> None:
    with occupied(rack[0]) as address:
        waiting = ctl.start("-v", "-o", "json", "wait", "--for", "idle", address)
        assert waiting.stderr is not None
        assert any(f"{address} <- " in line for line in waiting.stderr)  # it has looked, and was not answered
        assert waiting.poll() is None
    out, _ = waiting.communicate(timeout=60)
    assert waiting.returncode == 0
    assert '"state": "up and idle"' in out


def test_a_machine_without_a_network_does_not_see_a_card_go_down(ctl: Ctl, rack: list[Card]) -> None:
    answer = ctl.isolated("wait", "--for", "down", "--wait-time", "0.1", rack[0].address("eth0") or "")
    assert (answer.code, answer.result["category"], answer.result.get("state")) == (6, "no-network", None)


@pytest.mark.parametrize("why", ["deaf_interface", "interface_that_is_down"])
def test_an_interface_on_which_nobody_is_asked_shows_no_card_that_is_down(
    ctl: Ctl, rack: list[Card], why: str, request: pytest.FixtureRequest
) -> None:
    request.getfixturevalue(why)
    rack[0].set_link("eth0", False)
    try:
        waited = ctl.json("--timeout", "0.5", "wait", "--for", "down", "--wait-time", "0.1", "rack1")
        assert (waited.code, waited.result["category"], waited.result.get("state")) == (6, "no-network", None)
        assert waited.result["hint"].startswith("lan1 ")
        assert ctl("-i", "lan0", "--timeout", "0.5", "wait", "--for", "down", "rack1").code == 0
    finally:
        rack[0].set_link("eth0", True)


def test_a_card_that_is_known_by_its_name_only_is_down_when_it_is_not_heard(ctl: Ctl, scratch: Card) -> None:
    """What else that may be is told."""
    with stopped(scratch):
        waited = ctl.json("--timeout", "0.5", "wait", "--for", "down", "rack1")
    assert (waited.code, waited.result["state"]) == (0, "not found")
    assert "whose daemon stands still, looks the same" in waited.result["hint"]


def test_a_card_that_reboots_is_waited_for(ctl: Ctl, scratch: Card) -> None:
    assert ctl("reboot", "--wait", "rack1").code == 0
    assert ctl.json("wait", "--for", "idle", "rack1").result["state"] == "up and idle"


def test_many_are_waited_for_at_once(ctl: Ctl, rack: list[Card]) -> None:
    address = rack[0].address("eth0") or ""
    running = ctl.start("-o", "jsonl", "--parallel", "1", "wait", "--for", "up", "127.0.0.99", address)
    assert running.stdout
    assert f'"target":"{address}"' in running.stdout.readline()
    interrupt(running)


class Latecomers:
    """Two cards of one name, which first are silent, and another that is so until they were heard."""

    def __init__(self) -> None:
        self._heard = 0

    def __call__(self, request: Message) -> list[bytes]:
        self._heard += 1
        if self._heard <= 4:  # all that go before the first look
            return []
        if b'To="doubled"' in request.payload:
            self._heard += 100
            return [self._answer(request, "doubled")] * 2
        return [self._answer(request, "late")] if self._heard > 100 else []

    def _answer(self, request: Message, name: str) -> bytes:
        text = (
            f'<IpConfiguration From="{name}" To="tarvelctl"><Interface Name="VemkEth1" Mode="Dhcp"/>'
            '<Interface Name="VemkEth2" Mode="Disabled"/></IpConfiguration>'
        )
        return answer(request, text_payload(text), Format.SECTION_8)


def test_a_second_card_that_is_heard_late_is_a_warning(ctl: Ctl) -> None:
    with FakeUdpCard(Latecomers()):
        waited = ctl("-i", "lan0", "--timeout", "3", "--retries", "1", "wait", "--for", "up", "late", "doubled")
    assert waited.code == 0
    assert "warning: doubled: two cards have this name, and one address" in waited.err


def test_a_batch_with_a_failure_is_the_last(ctl: Ctl, scratches: list[Card], firmware: str) -> None:
    scratches[0].inside.fail("fwupgrade")
    upgraded = ctl.json("firmware", "upgrade", "--batch", "1", firmware, "rack[1-3]")
    assert upgraded.code == 7
    assert [result["category"] for result in upgraded.results] == ["unchanged", "untouched", "untouched"]
    assert [result["changed"] for result in upgraded.results[1:]] == [False, False]
    assert all("checked" in result for result in upgraded.results)
    kernel = {"component": "kernel", "version": "KERN-6.1.0"}
    assert all(kernel in result["components"] for result in ctl.json("versions", "rack[2-3]").results)
