# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Fixtures of the system tests: the shipped daemon on a simulated card, and clients on the card's LAN."""

import os
import shlex
import sys
import tempfile
from collections.abc import Callable, Iterator

import pytest
from support import long_tests
from support.bench import Bench
from support.daemon import COMMAND, IS_EMULATED, IS_HARDENED, ROOT

sys.path.insert(0, str(ROOT / "sim"))

import tarvelsim  # noqa: E402
from support.peers import TcpPeer, UdpPeer  # noqa: E402
from support.tracing import Tracer  # noqa: E402
from support.watch import Watch  # noqa: E402

# For tarvelsim, which looks for the card's other programs next to the daemon.
os.environ["TARVELD"] = shlex.join(COMMAND)


def pytest_configure(config: pytest.Config) -> None:
    config.addinivalue_line("markers", "needs_native: looks at the daemon's system calls, so it cannot be emulated")
    config.addinivalue_line("markers", "as_designed(row): the hardened build deviates, as that row of SECURITY.md says")
    long_tests.declare(config)


def pytest_collection_modifyitems(config: pytest.Config, items: list[pytest.Item]) -> None:
    long_tests.leave_out(config, items)
    for item in items:
        if IS_EMULATED and item.get_closest_marker("needs_native"):
            item.add_marker(pytest.mark.skip(reason=f"system calls of {COMMAND[0]} are not the daemon's"))
        deviation = item.get_closest_marker("as_designed")
        if IS_HARDENED and deviation:
            item.add_marker(pytest.mark.skip(reason=f"in the hardened build {deviation.args[0]}"))


FAILED = pytest.StashKey[bool]()


@pytest.hookimpl(hookwrapper=True)  # type: ignore[misc]
def pytest_runtest_makereport(item: pytest.Item) -> Iterator[None]:
    outcome = yield
    if outcome.get_result().failed:  # type: ignore[attr-defined]
        item.stash[FAILED] = True


@pytest.fixture(scope="session")
def lan() -> tarvelsim.Lan:
    try:
        return tarvelsim.Lan.current()
    except tarvelsim.NotInLan:
        pytest.exit("these tests need a simulated LAN: sim/lan /usr/bin/python3 -m pytest tests/system", returncode=4)


@pytest.fixture(scope="session")
def daemon() -> list[str]:
    """The command line of the daemon under test."""
    return COMMAND


@pytest.fixture(scope="session")
def only_card(lan: tarvelsim.Lan) -> Iterator[tarvelsim.Card]:
    """The card that the tests share; use `card` or `scratch_card`."""
    with lan.card("card1", command=COMMAND, reboot_time=0.3) as card:
        yield card


@pytest.fixture(scope="session")
def addresses(only_card: tarvelsim.Card) -> dict[str, str]:
    """The factory addresses of the shared card."""
    return {device: only_card.address(device) or "" for device in ("eth0", "eth1")}


def _tell_if_failed(card: tarvelsim.Card, request: pytest.FixtureRequest) -> None:
    """What a test that failed has left, for who was not there: pytest shows it below the failure."""
    if request.node.stash.get(FAILED, False):
        print(f"{card.records.log_tail()}\nits daemon's ends: {card.daemon.exits}\n{card.records.console()[-2000:]}")
        print(card.inside.run(["sh", "-c", "ip address; ip neighbour; ps -ef"], check=False).stdout)


@pytest.fixture
def card(only_card: tarvelsim.Card, request: pytest.FixtureRequest) -> Iterator[tarvelsim.Card]:
    """A card as new. The test leaves it as it was, or takes `scratch_card`."""
    yield only_card
    _tell_if_failed(only_card, request)
    survived = not only_card.daemon.exits
    if request.node.stash.get(FAILED, False) or not survived:
        only_card.reset()
    assert survived, "the daemon did not survive this test"


@pytest.fixture
def scratch_card(only_card: tarvelsim.Card, request: pytest.FixtureRequest) -> Iterator[tarvelsim.Card]:
    """A card as new, with which the test may do what it likes."""
    yield only_card
    _tell_if_failed(only_card, request)
    only_card.reset()


@pytest.fixture
def unhurried_card(lan: tarvelsim.Lan) -> Iterator[tarvelsim.Card]:
    """One of the test's own, called "unhurried", that takes the time that a real card takes."""
    with lan.card("unhurried", command=COMMAND, delays=tarvelsim.REAL_DELAYS) as card:
        yield card


@pytest.fixture
def udp(lan: tarvelsim.Lan, addresses: dict[str, str]) -> Iterator[UdpPeer]:
    """A client on the side of eth0."""
    peer = UdpPeer("lan0", lan.address("lan0"), addresses["eth0"])
    yield peer
    peer.close()


@pytest.fixture
def udp1(lan: tarvelsim.Lan, addresses: dict[str, str]) -> Iterator[UdpPeer]:
    """A client on the side of eth1."""
    peer = UdpPeer("lan1", lan.address("lan1"), addresses["eth1"])
    yield peer
    peer.close()


@pytest.fixture
def unhurried_udp(lan: tarvelsim.Lan, unhurried_card: tarvelsim.Card) -> Iterator[UdpPeer]:
    """A client of that card, on the side of eth0."""
    peer = UdpPeer("lan0", lan.address("lan0"), unhurried_card.address("eth0") or "")
    yield peer
    peer.close()


@pytest.fixture
def connect(addresses: dict[str, str]) -> Iterator[Callable[[], TcpPeer]]:
    """Makes connections; they are closed at the end, oldest first, as the card serves them."""
    peers: list[TcpPeer] = []

    def new_peer() -> TcpPeer:
        peers.append(TcpPeer(addresses["eth0"]))
        return peers[-1]

    yield new_peer
    for peer in peers:
        peer.close()


@pytest.fixture
def tcp(connect: Callable[[], TcpPeer]) -> TcpPeer:
    """A connected client."""
    return connect()


@pytest.fixture
def watch(only_card: tarvelsim.Card, lan: tarvelsim.Lan, addresses: dict[str, str]) -> Iterator[Watch]:
    """What happens from here on; requested before `tcp` it sees the connection being accepted."""
    peer = UdpPeer("lan0", lan.address("lan0"), addresses["eth0"])
    yield Watch(only_card, peer)
    peer.close()


@pytest.fixture(scope="module")
def bench() -> Iterator[Bench]:
    with tempfile.TemporaryDirectory(prefix="bench") as folder:
        yield Bench(folder)


@pytest.fixture
def tracer(scratch_card: tarvelsim.Card) -> Tracer:
    """Restarts the shared card's daemon with its system calls watched or spoiled."""
    return Tracer(scratch_card, COMMAND)
