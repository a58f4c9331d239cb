# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What no client can see, and the manual page therefore lists: these changes go through."""

import threading
from collections.abc import Iterator
from contextlib import contextmanager

import pytest
from support.ctl import Ctl
from support.fake_card import FakeTcpCard, FakeUdpCard, answer
from support.stopping import stopped
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Message, text_payload
from wire.numbers import Command, Format

pytestmark = pytest.mark.usefixtures("bystanders")

NTP = ("time", "set", "--ntp", "10.0.0.99")


def ip_text(name: str) -> bytes:
    return text_payload(
        f'<IpConfiguration From="{name}" To="tarvelctl"><Interface Name="VemkEth1" Mode="Dhcp"/>'
        '<Interface Name="VemkEth2" Mode="Disabled"/></IpConfiguration>'
    )


def test_a_twin_that_is_busy_is_not_seen_and_does_later_what_it_heard(ctl: Ctl, scratch: Card, twin: Card) -> None:
    with stopped(twin):
        answer = ctl.json("ip", "set", "--if", "VemkEth2", "--dhcp", "rack1")
    assert answer.code == 0
    wait_for(
        lambda: twin.inside.uci("get", "network.lanvemt2eth2.proto") == "dhcp", 30, lambda: "the twin heard nothing"
    )


def test_a_twin_that_is_off_is_not_seen(ctl: Ctl, scratch: Card, twin: Card) -> None:
    twin.daemon.stop()
    assert ctl.json(*NTP, "rack1").code == 0


class LateTwin:
    """Another rack1, which answers what it heard only when the client has ended."""

    def __init__(self) -> None:
        self._client_ended = threading.Event()

    def __call__(self, request: Message) -> list[bytes]:
        self._client_ended.wait()
        return [answer(request, ip_text("rack1"), Format.SECTION_8)]

    @contextmanager
    def held_back(self) -> Iterator[None]:
        try:
            yield
        finally:
            self._client_ended.set()


def test_a_twin_that_is_slower_than_the_listening_time_is_not_seen(ctl: Ctl, scratch: Card) -> None:
    late = LateTwin()
    with FakeUdpCard(late) as twin, late.held_back():
        assert ctl.json(*NTP, "rack1").code == 0
        wait_for(lambda: len(twin.requests) > 0, 30, lambda: "the twin heard nothing")


def test_a_second_card_with_the_address_that_is_off_is_not_seen(ctl: Ctl, scratch: Card, rack: list[Card]) -> None:
    address = scratch.address("eth0") or ""
    rack[1].inside.run(["ip", "address", "flush", "dev", "eth0"])
    rack[1].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth0"])
    rack[1].inside.run(["ip", "link", "set", "eth0", "down"])
    try:
        assert ctl.json_checked(*NTP, address).code == 0
    finally:
        rack[1].inside.run(["ip", "link", "set", "eth0", "up"])
        rack[1].reset()


def test_a_slow_second_card_with_an_address_that_is_given_is_not_seen(ctl: Ctl, rack: list[Card], doubled: str) -> None:
    """By a name a slow card is asked again; nobody knows what else would tell of it."""
    rack[0].inside.run(["ip", "link", "set", "eth0", "arp", "off"])  # connections go to the other
    try:
        with stopped(rack[0]):
            assert ctl.json_checked("-i", "lan0", *NTP, doubled).code == 0
    finally:
        rack[0].inside.run(["ip", "link", "set", "eth0", "arp", "on"])
    assert rack[1].inside.uci("get", "system.ntp.server") == "10.0.0.99"


def test_two_addresses_of_one_card_without_its_name_are_two_jobs(ctl: Ctl, scratch: Card, firmware: str) -> None:
    addresses = [scratch.address(device) or "" for device in ("eth0", "eth1")]
    answers = ctl.json("firmware", "upload", firmware, *addresses)
    assert answers.code == 0
    assert [result["target"] for result in answers.results] == addresses
    assert " is " not in answers.err


def test_clones_that_are_heard_on_one_network_each_are_one_card(ctl: Ctl, scratch: Card, twin: Card) -> None:
    """One of them is changed, of which nobody knows which."""
    for section in ("lanvemt2eth1", "lanvemt2eth2"):
        address = scratch.inside.uci("get", f"network.{section}.ipaddr")
        twin.inside.uci("set", f"network.{section}.ipaddr={address}")
    twin.inside.uci("commit", "network")
    for device in ("eth0", "eth1"):
        twin.inside.run(["ip", "address", "flush", "dev", device])
        twin.inside.run(["ip", "address", "add", f"{scratch.address(device)}/24", "dev", device])
    scratch.set_link("eth1", False)
    twin.set_link("eth0", False)
    try:
        assert ctl.json(*NTP, "rack1").code == 0
    finally:
        scratch.set_link("eth1", True)
    servers = [card.inside.uci("get", "system.ntp.server") for card in (scratch, twin)]
    assert servers.count("10.0.0.99") == 1


def test_an_answer_that_the_network_repeats_looks_like_a_second_card(ctl: Ctl) -> None:
    with FakeUdpCard(lambda request: [answer(request, ip_text("echoed"), Format.SECTION_8)] * 2) as card:
        result = ctl.json("-i", "lan0", "reboot", "echoed").result
    assert (result["code"], result["category"]) == (11, "ambiguous")
    assert {request.header.command for request in card.requests} == {Command.IP_GET}


def test_an_address_that_hears_no_broadcast_is_not_checked(ctl: Ctl, firmware: str) -> None:
    """As behind a router."""
    with FakeTcpCard(answer) as card:
        result = ctl.json("firmware", "upload", firmware, card.address).result
    assert (result["code"], result["checked"]) == (0, False)


def test_a_machine_that_can_hear_nobody_changes_what_has_an_address(ctl: Ctl) -> None:
    told = ctl.isolated(*NTP, "127.0.0.1", "127.0.0.2", "rack1")
    results = told.results
    assert [result["category"] for result in results] == ["refused", "refused", "no-interface"]
    assert [result.get("checked") for result in results] == [False] * 3
    assert "warning: 127.0.0.1: whether two cards share its address was not checked" in told.err
