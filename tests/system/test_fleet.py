# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Many cards on several LANs: each is a card like any other, and the client sits on all LANs."""

import json
from collections.abc import Iterator

import pytest
from support.bench import Bench

CARDS, LANS = 6, 2
ADDRESSES = [f"10.{lan}.{4 * network}.{10 + card}" for lan in (1, 2) for network in (0, 1) for card in (1, 2, 3)]
SAY_HELLO = """
import socket, sys
for address in sys.argv[1:]:
    with socket.create_connection((address, 50003), 60) as connection:
        print(*connection.getsockname()[:1])
"""


@pytest.fixture(scope="module")
def fleet(bench: Bench) -> Iterator[Bench]:
    with bench.running("--cards", str(CARDS), "--lans", str(LANS)):
        yield bench


def on_card(fleet: Bench, name: str, *command: str) -> str:
    status, out, complaints = fleet("shell", name, "--", *command)
    assert status == 0, complaints
    return out


def on_client(fleet: Bench, *command: str) -> str:
    status, out, complaints = fleet("client", "--", *command)
    assert status == 0, complaints
    return out


def test_each_daemon_is_reached_at_both_addresses_from_the_client_on_its_lan(fleet: Bench) -> None:
    ours = on_client(fleet, "/usr/bin/python3", "-c", SAY_HELLO, *ADDRESSES).split()
    assert ours == [f"10.{lan}.{4 * network}.1" for lan in (1, 2) for network in (0, 1) for _ in range(3)]


def test_each_card_has_its_own_name(fleet: Bench) -> None:
    names = [on_card(fleet, f"card{number}", "uci", "get", "system.@system[0].hostname") for number in (1, 4, CARDS)]
    assert names == ["card1\n", "card4\n", f"card{CARDS}\n"]


def test_netmask_time_server_and_lease_are_those_of_the_large_lan(fleet: Bench) -> None:
    assert on_card(fleet, "card5", "uci", "get", "network.lanvemt2eth1.netmask") == "255.255.252.0\n"
    assert on_card(fleet, "card5", "uci", "get", "system.ntp.server") == "10.2.0.1\n"
    on_card(fleet, "card5", "uci", "set", "network.lanvemt2eth2.proto=dhcp")
    on_card(fleet, "card5", "/etc/init.d/network", "restart")
    leased = "until ip -4 -brief address show eth1 | grep -o '10.2.6.*'; do sleep 0.05; done"
    assert on_card(fleet, "card5", "sh", "-c", leased).strip() == "10.2.6.12/22"


def test_nobody_asks_for_an_address_that_is_known(fleet: Bench) -> None:
    """The kernel has one table for what was asked for, in all namespaces together, and it is not large."""
    for number in (1, CARDS):
        known = json.loads(on_card(fleet, f"card{number}", "ip", "-json", "neighbour", "show", "dev", "eth0"))
        assert [(entry["dst"], "extern_learn" in entry) for entry in known] == [(f"10.{1 + number // 4}.0.1", True)]
    known = json.loads(on_client(fleet, "ip", "-json", "neighbour"))
    assert sorted(entry["dst"] for entry in known if "extern_learn" in entry) == sorted(ADDRESSES)


def test_cards_hear_those_of_their_own_lan_only(fleet: Bench) -> None:
    ask = "import socket; socket.create_connection(('10.{}.0.12', 50003), 60)"
    ends = [fleet("shell", "card1", "--", "/usr/bin/python3", "-c", ask.format(lan))[0] for lan in (1, 2)]
    assert ends == [0, 1]
