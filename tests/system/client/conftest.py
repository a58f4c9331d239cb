# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Fixtures of the client's tests: the program, and a rack of cards it works on."""

import os
import subprocess
from collections.abc import Iterator
from pathlib import Path

import pytest
import tarvelsim
from support.archives import archive, large_archive
from support.ctl import Ctl
from support.snapshot import Snapshot

RACK = 8
REBOOT_TIME = 3.0  # seconds; short, but long enough to be seen as more than a busy card


@pytest.fixture(scope="session")
def program(daemon: list[str]) -> Path:
    """TARVELCTL, or the client that was built with the daemon."""
    program = Path(os.environ.get("TARVELCTL") or Path(daemon[-1]).parent / "tarvelctl").resolve()
    if not program.exists():
        pytest.fail(f"there is no client at {program}")
    return program


@pytest.fixture
def ctl(program: Path, lan: tarvelsim.Lan, tmp_path: Path) -> Ctl:
    _forget_neighbours()
    return Ctl(program, tmp_path)


def _forget_neighbours() -> None:
    """A card that had another's address in an earlier test would be sent its connections for up to a minute."""
    for network in ("lan0", "lan1"):
        subprocess.run(["ip", "neighbour", "flush", "dev", network], check=True)


@pytest.fixture(scope="session")
def whole_rack(lan: tarvelsim.Lan, daemon: list[str]) -> Iterator[list[tarvelsim.Card]]:
    """Cards named rack1 to rack8, which the tests share."""
    cards = [lan.card(f"rack{number}", command=daemon, reboot_time=REBOOT_TIME) for number in range(1, RACK + 1)]
    try:
        for card in cards:
            card.start(wait=False)
        for card in cards:
            card.daemon.wait_ready(timeout=30)
        yield cards
    finally:
        for card in cards:
            card.stop()


@pytest.fixture
def rack(whole_rack: list[tarvelsim.Card]) -> list[tarvelsim.Card]:
    """The cards as new; the test leaves them as they were, or takes `scratch`."""
    return whole_rack


@pytest.fixture
def scratch(whole_rack: list[tarvelsim.Card]) -> Iterator[tarvelsim.Card]:
    """The first card of the rack, with which the test may do what it likes."""
    yield whole_rack[0]
    whole_rack[0].reset()


@pytest.fixture
def scratches(whole_rack: list[tarvelsim.Card]) -> Iterator[list[tarvelsim.Card]]:
    """The first three cards of the rack, likewise."""
    yield whole_rack[:3]
    for card in whole_rack[:3]:
        card.reset()


@pytest.fixture
def bystanders(whole_rack: list[tarvelsim.Card]) -> Iterator[None]:
    """All cards but the first are in the end as they were."""
    before = Snapshot(whole_rack[1:])
    yield
    assert Snapshot(whole_rack[1:]) == before


@pytest.fixture
def untouched(whole_rack: list[tarvelsim.Card]) -> Iterator[None]:
    """All cards are in the end as they were."""
    before = Snapshot(whole_rack)
    yield
    assert Snapshot(whole_rack) == before


@pytest.fixture
def doubled(rack: list[tarvelsim.Card]) -> Iterator[str]:
    """rack2 has the address of rack1, too."""
    address = rack[0].address("eth0") or ""
    rack[1].inside.run(["ip", "address", "flush", "dev", "eth0"])
    rack[1].inside.run(["ip", "address", "add", f"{address}/24", "dev", "eth0"])
    yield address
    rack[1].reset()


@pytest.fixture
def twin(lan: tarvelsim.Lan, daemon: list[str], rack: list[tarvelsim.Card]) -> Iterator[tarvelsim.Card]:
    """Another card that is called rack1."""
    with lan.card("twin", command=daemon, hostname="rack1") as card:
        yield card


@pytest.fixture
def firmware(tmp_path: Path) -> str:
    """An archive with a newer kernel than the cards have."""
    path = tmp_path / "firmware.tar.gz"
    path.write_bytes(archive({"pnr/kernel": b"KERN-7.0.0\n"}))
    return str(path)


@pytest.fixture
def large(tmp_path: Path) -> str:
    """An archive that takes a while to send."""
    path = tmp_path / "large.tar.gz"
    path.write_bytes(large_archive())
    return str(path)


@pytest.fixture
def deaf_interface() -> Iterator[None]:
    """This machine takes no request to cards on its second interface."""
    subprocess.run(["nft", "add", "table", "ip", "deaf"], check=True)
    try:
        subprocess.run(["nft", "add chain ip deaf o { type filter hook output priority 0; }"], check=True)
        subprocess.run(["nft", "add rule ip deaf o oifname lan1 udp dport 50003 drop"], check=True)
        yield
    finally:
        subprocess.run(["nft", "delete", "table", "ip", "deaf"], check=True)


@pytest.fixture
def interface_that_is_down(lan: tarvelsim.Lan) -> Iterator[None]:
    """The second one of this machine."""
    subprocess.run(["ip", "link", "set", "lan1", "down"], check=True)
    yield
    subprocess.run(["ip", "link", "set", "lan1", "up"], check=True)
