# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card under attack: jobs are played on it, and afterwards it must be whole."""

import time
from dataclasses import dataclass
from itertools import cycle

import tarvelsim
from support.peers import ConnectionEnded, TcpPeer, UdpPeer
from support.tracing import Tracer
from wire import Command, Header, request

from .jobs import Job

HOST = "card1"  # as in the golden exchanges
_CONFIGURATIONS = ("/etc/config/network", "/etc/config/system")
_FOLDERS_TO_EMPTY = ("/tmp/.uci", "/tmp/upgrade/pnr")
LIMIT = 60.0  # seconds until a card that says nothing counts as lost
_NEXT_LOOK = 0.3


class Lost(Exception):
    """The card neither answers nor has it ended."""


@dataclass(frozen=True)
class Result:
    replies: list[bytes]
    ended: bool  # the daemon, on the way


class TargetCard:
    """One card for all attacks. Its network is never restarted and it never reboots: it must stay reachable."""

    def __init__(self, lan: tarvelsim.Lan, card: tarvelsim.Card, command: list[str]) -> None:
        self.card = card
        self._command = command
        self._lan = lan
        self._udp = UdpPeer("lan0", lan.address("lan0"), card.planned_addresses()["eth0"])
        self._address = card.planned_addresses()["eth0"]
        self._fences = cycle(range(0x6000, 0x8000))
        self._factory = {path: card.inside.read_bytes(path) for path in _CONFIGURATIONS}
        self.tracer = Tracer(card, command)
        for program in ("network", "reboot"):
            card.inside.fail(program, 0)

    def restore(self) -> None:
        """The settings of a new card, and nothing staged."""
        for path, content in self._factory.items():
            self.card.inside.write(path, content)
        for path in _FOLDERS_TO_EMPTY:
            self.card.inside.remove(path)
        self.card.inside.remove("/etc/rc.d/S65ntpd")

    def patient_client(self) -> UdpPeer:
        return UdpPeer("lan0", self._lan.address("lan0"), self._address)

    def start_plain(self) -> None:
        self.card.daemon.supervise(False)
        self.card.daemon.stop()
        self.card.daemon.start(self._command)

    # Jobs

    def play(self, job: Job, asked_again: float = _NEXT_LOOK) -> Result:
        """Ends when the card has answered a later question, or has ended. The question is repeated after that time."""
        self._udp.socket.settimeout(asked_again)
        ends = len(self.card.daemon.exits)
        replies = self._over_tcp(job) if job.over_tcp else self._over_udp(job)
        later, ended = self._ask_later(ends)
        return Result(replies + later, ended)

    def _over_tcp(self, job: Job) -> list[bytes]:
        try:
            peer = TcpPeer(self._address)
        except OSError:
            return []
        try:
            peer.send(job.data)
            peer.end_sending()
            data = peer.rest()
        except OSError:
            data = b""
        peer.socket.close()
        return [data] if data else []

    def _over_udp(self, job: Job) -> list[bytes]:
        self._udp.send(job.data)
        return []

    def _ask_later(self, ends: int) -> tuple[list[bytes], bool]:
        """A question that nobody knows is answered by every card that lives; it is repeated, as its answer may fail."""
        limit = time.monotonic() + LIMIT
        answers: list[bytes] = []
        while time.monotonic() < limit:
            if len(self.card.daemon.exits) > ends:
                return answers, True
            number = next(self._fences)
            try:
                self._udp.send(request(number))
                answers += self._until(number)
                return answers, False
            except OSError:  # a time-out, or a port that is closed
                continue
        raise Lost(f"{self.card.name} does not answer; {self.card.records.log_lines()[-5:]}")

    def _until(self, number: int) -> list[bytes]:
        answers: list[bytes] = []
        while True:
            data = self._udp.socket.recv(65536)
            command = Header.decode(data).command
            if command == number | 0x8000:
                return answers
            if not 0xE000 <= command:  # the answer to an earlier question
                answers.append(data)

    # Afterwards

    def complaints(self, before: dict[str, bytes] | None = None) -> list[str]:
        """What is wrong with the card: its configuration must be whole and requests be served."""
        found = [f"uci cannot read {name}" for name in ("network", "system") if not self._is_readable(name)]
        versions = self._ask(request(Command.VERSIONS))
        if b"<Versions>" not in versions or b"BootLoader" not in versions:
            found.append(f"versions are answered with {versions!r}")
        if b"<TimeReferenceConfiguration" not in self._ask(request(Command.TIME_GET)):
            found.append("the time reference is not told")
        return found

    def _is_readable(self, name: str) -> bool:
        done = self.card.inside.run(["uci", "show", name], check=False)
        return done.returncode == 0 and "lanvemt2eth2.proto" in done.stdout if name == "network" else bool(done.stdout)

    def _ask(self, data: bytes) -> bytes:
        try:
            with TcpPeer(self._address) as peer:
                return peer.ask(data).encode()
        except (OSError, ConnectionEnded) as error:
            return repr(error).encode()

