# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A card behind the packaged rules, and its clients."""

import socket
from collections.abc import Iterator
from pathlib import Path

import pytest
import tarvelsim
from support.archives import archive_of_size
from support.ctl import Ctl
from support.daemon import COMMAND
from support.firewall import CONNECTIONS, LIMITS, MANAGEMENT, Firewall, packaged, without_refill
from support.peers import BROADCAST, PATIENCE, TcpPeer, UdpPeer
from tarvelsim.waiting import wait_for
from wire import request
from wire.numbers import PORT

NOT_FROM_HERE = "not from the management network"


@pytest.fixture(scope="module")
def lan() -> tarvelsim.Lan:
    return tarvelsim.Lan.current()


@pytest.fixture(scope="module")
def card(lan: tarvelsim.Lan) -> Iterator[tarvelsim.Card]:
    with lan.card("card1", command=COMMAND) as card:
        yield card


@pytest.fixture
def firewall(card: tarvelsim.Card) -> Iterator[Firewall]:
    firewall = Firewall(card)
    yield firewall
    firewall.unload()


@pytest.fixture
def ctl(card: tarvelsim.Card, tmp_path: Path) -> Ctl:
    return Ctl(Path(COMMAND[-1]).parent / "tarvelctl", tmp_path)


def address_of(card: tarvelsim.Card, device: str) -> str:
    return card.planned_addresses()[device]


def test_the_client_reaches_no_limit(firewall: Firewall, card: tarvelsim.Card, ctl: Ctl, tmp_path: Path) -> None:
    firewall.load(packaged(LIMITS), packaged(CONNECTIONS))
    firmware = tmp_path / "firmware.tar.gz"
    firmware.write_bytes(archive_of_size(2 << 20))
    assert len(ctl.json("discover").results) == 2  # once on each network
    asked = ctl.json("--timeout", "2", "ip", "get", "nobody[1-200]", "card1")  # each name three times
    assert [result["target"] for result in asked.results if result["ok"]] == ["card1"]
    uploaded = ctl("firmware", "upload", str(firmware), "card1")
    assert uploaded.code == 0, uploaded.err
    for _ in range(20):
        assert ctl("versions", address_of(card, "eth0")).code == 0
    assert set(firewall.dropped().values()) == {0}


def test_a_reload_in_the_middle_of_traffic_succeeds(firewall: Firewall, card: tarvelsim.Card, ctl: Ctl) -> None:
    everything = [packaged(name) for name in (LIMITS, CONNECTIONS, MANAGEMENT)]
    firewall.load(*everything)
    assert ctl("versions", address_of(card, "eth1")).code == 0
    rules = firewall.dropped()
    firewall.load(*everything)
    assert firewall.dropped().keys() == rules.keys()
    assert ctl("versions", address_of(card, "eth1")).code == 0


def test_one_source_over_its_limit_leaves_the_card_to_others(
    firewall: Firewall, card: tarvelsim.Card, lan: tarvelsim.Lan
) -> None:
    firewall.load(without_refill(packaged(LIMITS)))
    flooding = UdpPeer("lan0", lan.address("lan0"), address_of(card, "eth0"))
    while firewall.dropped()["too many datagrams"] == 0:
        for _ in range(100):
            flooding.send(b"")
    other = UdpPeer("lan1", lan.address("lan1"), address_of(card, "eth1"))
    assert other.settle() == []
    dropped = firewall.dropped()["too many datagrams"]
    flooding.send(request(2), to=BROADCAST)
    wait_for(lambda: firewall.dropped()["too many datagrams"] > dropped, PATIENCE, lambda: "a broadcast came through")
    flooding.close()
    other.close()


def test_only_the_management_network_reaches_the_card(
    firewall: Firewall, card: tarvelsim.Card, lan: tarvelsim.Lan
) -> None:
    firewall.load(packaged(MANAGEMENT))
    with TcpPeer(address_of(card, "eth1")) as tcp:
        tcp.ask(request(2))
    managing = UdpPeer("lan1", lan.address("lan1"), address_of(card, "eth1"))
    assert managing.settle() == []
    assert firewall.dropped()[NOT_FROM_HERE] == 0
    managing.close()
    other = UdpPeer("lan0", lan.address("lan0"), address_of(card, "eth0"))
    other.send(request(2), to=BROADCAST)
    wait_for(lambda: firewall.dropped()[NOT_FROM_HERE] == 1, PATIENCE, lambda: "a broadcast came through")
    other.close()
    with socket.socket() as refused:
        refused.setblocking(False)
        refused.connect_ex((address_of(card, "eth0"), PORT))
        wait_for(lambda: firewall.dropped()[NOT_FROM_HERE] > 1, PATIENCE, lambda: "a connection came through")
