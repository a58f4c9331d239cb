# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a wire can carry: streams in crumbs, cut at any byte, clients that never read, floods, bombs."""

import socket
import struct
from collections.abc import Callable
from random import Random

from support.documents import ip_configuration
from support.peers import BROADCAST, TcpPeer, UdpPeer
from tarvelsim import Card
from wire import Command, masked, request

from .jobs import JOBS

# Every command with every way it can end, but for what ends the connection.
_SESSION = b"".join(job.data for job in JOBS if job.over_tcp and job.name != "wrong service")
_SESSION += request(Command.TIME_SET, "<no-time/>")
_BOMB = (
    '<!DOCTYPE x [<!ENTITY a "aaaaaaaaaaaaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;">'
    '<!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;"><!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;">'
    '<!ENTITY e "&d;&d;&d;&d;&d;&d;&d;&d;">]><IpConfiguration From="&e;" To="card1">&e;</IpConfiguration>'
)


class Wire:
    """Each attack returns how often it did what it does."""

    def __init__(self, card: Card, client: UdpPeer, scale: float) -> None:
        self._card = card
        self._client = client
        self._address = card.planned_addresses()["eth0"]
        self._scale = scale

    def attacks(self) -> dict[str, Callable[[], int]]:
        return {
            "sessions in segments of one byte": self._crumbs,
            "sessions reset behind each byte": lambda: self._cut(reset=True),
            "sessions half closed behind each byte": lambda: self._cut(reset=False),
            "clients that never read": self._never_reads,
            "connections without a word": self._connects,
            "random datagrams": self._datagrams,
            "entity bombs": self._bombs,
            "foreign broadcasts beside a client": self._flood,
        }

    def _times(self, count: int) -> int:
        return max(1, int(count * self._scale))

    def _crumbs(self) -> int:
        self._play_whole()
        # The first has changed the card, which others find as they leave it.
        expected = self._play_whole()
        times = self._times(20)
        for _ in range(times):
            with TcpPeer(self._address) as peer:
                peer.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                for index in range(len(_SESSION)):
                    peer.send(_SESSION[index : index + 1])
                peer.end_sending()
                assert masked(peer.rest()) == expected, "a stream in crumbs is answered differently"
        return times

    def _play_whole(self) -> bytes:
        with TcpPeer(self._address) as peer:
            peer.send(_SESSION)
            peer.end_sending()
            return masked(peer.rest())

    def _cut(self, reset: bool) -> int:
        step = max(1, int(1 / self._scale))
        cuts = range(0, len(_SESSION) + 1, step)
        for cut in cuts:
            peer = TcpPeer(self._address)
            peer.send(_SESSION[:cut])
            if reset:
                peer.reset()
            else:
                peer.close()
        return len(cuts)

    def _never_reads(self) -> int:
        """Until nothing more fits between the two, then the connection is reset."""
        times = self._times(10)
        for _ in range(times):
            client = socket.socket()
            client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1)
            client.connect((self._address, 50003))
            client.settimeout(0.2)
            try:
                while True:
                    client.sendall(request(Command.VERSIONS) * 1000)
            except TimeoutError:
                pass
            client.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            client.close()
        return times

    def _connects(self) -> int:
        times = self._times(10_000)
        for _ in range(times):
            TcpPeer(self._address).close()
        return times

    def _datagrams(self) -> int:
        """As many at once as surely fit into the card's queue."""
        random = Random(1)
        times = self._times(100_000)
        for index in range(times):
            data = random.randbytes(random.choice((0, 1, 19, 20, 21, 100, 1472, 4096, 9000)))
            if random.random() < 0.5:
                data = request(random.choice((3, 4, 0x42)), message_format=1, payload_length=len(data)) + data
            self._client.send(data)
            if index % 8 == 0:
                self._client.settle()
        return times

    def _bombs(self) -> int:
        times = self._times(100)
        for _ in range(times):
            for command in (Command.IP_GET, Command.IP_SET):
                self._client.ask(request(command, _BOMB))
            with TcpPeer(self._address) as peer:
                peer.ask(request(Command.TIME_SET, _BOMB))
        return times

    def _flood(self) -> int:
        times = self._times(2000)
        foreign = request(Command.IP_GET, ip_configuration(to="another"))
        with TcpPeer(self._address) as peer:
            for _ in range(times):
                for _ in range(10):
                    self._client.send(foreign, to=BROADCAST)
                assert b"BootLoader" in peer.ask(request(Command.VERSIONS)).encode(), "versions beside a flood"
        return times * 10
