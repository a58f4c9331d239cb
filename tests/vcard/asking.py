# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Clients at the other ends of the card's cables."""

import contextlib
import time
from collections.abc import Iterator

from card import ADDRESSES, CABLES, HOSTS, VirtualCard
from support.documents import reboot_card
from support.peers import BROADCAST, Answer, TcpPeer, UdpPeer
from wire import Command, Message, Status, request


def connect(address: str = ADDRESSES["eth0"], patience: float = 15.0) -> TcpPeer:
    """A connection to a card that may still be starting."""
    deadline = time.monotonic() + patience
    while True:
        try:
            return TcpPeer(address)
        except OSError:
            if time.monotonic() > deadline:
                raise
            time.sleep(0.02)


def ask(command: int, text: str | bytes | None = None, address: str = ADDRESSES["eth0"]) -> Message:
    """The answer to one request on a connection of its own."""
    with connect(address) as peer:
        return peer.ask(request(command, text))


@contextlib.contextmanager
def udp_peer(device: str) -> Iterator[UdpPeer]:
    peer = UdpPeer(CABLES[device], HOSTS[device], ADDRESSES[device])
    try:
        yield peer
    finally:
        peer.close()


def ask_udp(device: str, command: int, text: str, to: str = BROADCAST) -> Answer:
    """The answer to one datagram; clients that look for a card broadcast."""
    with udp_peer(device) as peer:
        return peer.ask(request(command, text), to)


def reboot(card: VirtualCard, device: str = "eth0") -> None:
    """Asks the card to reboot, and waits until it is back."""
    assert ask_udp(device, Command.REBOOT, reboot_card()).header.status == Status.SUCCESS
    card.wait_for_boot()
