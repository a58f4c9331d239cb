# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What each packaged rule drops. The packets travel on the loopback device of the LAN's clients, between its addresses."""

import socket
import struct
import subprocess
from collections.abc import Iterator
from contextlib import ExitStack

import pytest
from support.firewall import CONNECTIONS, LIMITS, MANAGEMENT, Firewall, packaged, without_refill
from support.peers import PATIENCE
from tarvelsim.waiting import wait_for
from wire.numbers import PORT

CARD, CLIENT, ANOTHER = "127.0.0.1", "127.0.0.2", "127.0.0.3"
BURST_OF_DATAGRAMS, BURST_OF_CONNECTIONS, MOST_CONNECTIONS = 1000, 100, 256


@pytest.fixture
def firewall() -> Iterator[Firewall]:
    firewall = Firewall()
    yield firewall
    firewall.unload()


class DatagramCard:
    """Hears datagrams as a card would."""

    def __init__(self, stack: ExitStack) -> None:
        self._stack = stack
        self._socket = stack.enter_context(socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
        self._socket.bind((CARD, PORT))
        self._socket.settimeout(PATIENCE)

    def client(self, address: str) -> socket.socket:
        client = self._stack.enter_context(socket.socket(socket.AF_INET, socket.SOCK_DGRAM))
        client.bind((address, 0))
        return client

    def hears(self, client: socket.socket, times: int = 1) -> None:
        for number in range(times):
            client.sendto(b"%d" % number, (CARD, PORT))
            assert self._socket.recv(16) == b"%d" % number


@pytest.fixture
def datagrams() -> Iterator[DatagramCard]:
    with ExitStack() as stack:
        yield DatagramCard(stack)


class ConnectionCard:
    """Accepts connections, however many, and closes its end of none."""

    def __init__(self, stack: ExitStack) -> None:
        self._stack = stack
        self._socket = stack.enter_context(socket.create_server((CARD, PORT), backlog=1024))
        self._socket.settimeout(PATIENCE)

    def connect(self, address: str) -> tuple[socket.socket, socket.socket]:
        """The client's end, and the card's."""
        client = socket.create_connection((CARD, PORT), timeout=PATIENCE, source_address=(address, 0))
        self._stack.enter_context(client)
        return client, self.accept()[0]

    def accept(self) -> tuple[socket.socket, tuple[str, int]]:
        accepted, client = self._socket.accept()
        accepted.settimeout(PATIENCE)
        return self._stack.enter_context(accepted), client

    def try_to_connect(self, address: str) -> None:
        """Sends the first segment, and does not wait for an answer."""
        client = self._stack.enter_context(socket.socket())
        client.bind((address, 0))
        client.setblocking(False)
        with pytest.raises(BlockingIOError):
            client.connect((CARD, PORT))


@pytest.fixture
def connections() -> Iterator[ConnectionCard]:
    with ExitStack() as stack:
        yield ConnectionCard(stack)


def reset(client: socket.socket) -> None:
    client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    client.close()


def wait_for_drop(firewall: Firewall, rule: str, count: int = 1) -> None:
    wait_for(lambda: firewall.dropped()[rule] >= count, PATIENCE, lambda: f"{rule}: {firewall.dropped()}")


def test_datagrams_of_one_source_are_limited(firewall: Firewall, datagrams: DatagramCard) -> None:
    rule = "too many datagrams"
    firewall.load(without_refill(packaged(LIMITS)))
    client = datagrams.client(CLIENT)
    datagrams.hears(client, BURST_OF_DATAGRAMS)
    assert firewall.dropped()[rule] == 0
    for _ in range(10):
        client.sendto(b"more", (CARD, PORT))
    wait_for_drop(firewall, rule, 10)
    datagrams.hears(datagrams.client(ANOTHER))
    assert firewall.dropped()[rule] == 10


def test_new_connections_of_one_source_are_limited(firewall: Firewall, connections: ConnectionCard) -> None:
    rule = "too many new connections"
    firewall.load(without_refill(packaged(LIMITS)))
    for _ in range(BURST_OF_CONNECTIONS):
        connections.connect(CLIENT)[0].close()
    assert firewall.dropped()[rule] == 0
    connections.try_to_connect(CLIENT)
    wait_for_drop(firewall, rule)
    connections.connect(ANOTHER)


def test_rules_that_are_read_twice_count_once(
    firewall: Firewall, datagrams: DatagramCard, connections: ConnectionCard
) -> None:
    """As from a second copy among the firewall's files."""
    rules = [without_refill(packaged(LIMITS)), packaged(CONNECTIONS), packaged(MANAGEMENT)]
    firewall.load(*rules, *rules)
    datagrams.hears(datagrams.client(CLIENT), BURST_OF_DATAGRAMS)
    for _ in range(BURST_OF_CONNECTIONS):
        connections.connect(CLIENT)
    assert set(firewall.dropped().values()) == {0}


def test_a_reload_keeps_what_was_counted(firewall: Firewall, datagrams: DatagramCard) -> None:
    rules = without_refill(packaged(LIMITS))
    firewall.load(rules)
    client = datagrams.client(CLIENT)
    datagrams.hears(client, BURST_OF_DATAGRAMS)
    for _ in range(3):
        firewall.load(rules)
        client.sendto(b"more", (CARD, PORT))
        wait_for_drop(firewall, "too many datagrams")
    datagrams.hears(datagrams.client(ANOTHER))


def test_a_set_with_other_flags_is_refused_and_the_rules_stay(firewall: Firewall) -> None:
    firewall.load(packaged(LIMITS))
    rules = firewall.dropped()
    changed = packaged(LIMITS).replace("flags dynamic,timeout", "flags dynamic").replace("\ttimeout 1m\n", "")
    with pytest.raises(subprocess.CalledProcessError):
        firewall.load(changed)
    assert firewall.dropped() == rules
    firewall.load(changed.replace("tarveld_udp", "tarveld_udp2").replace("tarveld_tcp", "tarveld_tcp2"))


def test_segments_of_an_open_connection_are_not_limited(firewall: Firewall, connections: ConnectionCard) -> None:
    firewall.load(without_refill(packaged(LIMITS)), packaged(CONNECTIONS))
    client, accepted = connections.connect(CLIENT)
    for _ in range(3 * BURST_OF_CONNECTIONS):
        client.send(b"x")
        assert accepted.recv(1) == b"x"
    assert set(firewall.dropped().values()) == {0}


def test_connections_of_one_source_at_a_time_are_limited(firewall: Firewall, connections: ConnectionCard) -> None:
    rule = "too many connections at a time"
    firewall.load(packaged(CONNECTIONS))
    kept = [connections.connect(CLIENT) for _ in range(MOST_CONNECTIONS)]
    assert firewall.dropped()[rule] == 0
    connections.try_to_connect(CLIENT)
    wait_for_drop(firewall, rule)
    connections.connect(ANOTHER)
    reset(kept[0][0])
    assert connections.accept()[1][0] == CLIENT  # the one that was dropped has tried again


def test_urgent_data_is_dropped(firewall: Firewall, connections: ConnectionCard) -> None:
    firewall.load(packaged(LIMITS))
    connections.connect(CLIENT)[0].send(b"!", socket.MSG_OOB)
    wait_for_drop(firewall, "urgent data")
