# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card under attack: jobs are played on it, and afterwards it must be whole."""

import socket
import time
from dataclasses import dataclass
from functools import cached_property
from itertools import cycle

import tarvelsim
from model import Card, Fault
from model.stream import LastWords
from support.peers import ConnectionEnded, TcpPeer, UdpPeer
from support.tracing import Tracer
from twin.conversation import converse
from twin.rig import MARKER, NTP_LINK, UPGRADE_FOLDER, Rig
from wire import Command, request
from wire.numbers import PORT

from .jobs import DEVICE, Job

HOST = "card1"  # as in the golden exchanges
_CONFIGURATIONS = ("/etc/config/network", "/etc/config/system")
_LEFT_BEHIND = ("/tmp/.uci", "/tmp/uci.tmp", "/var/timesettings.lock", MARKER, NTP_LINK)
PATIENCE = 60.0  # seconds until a card that says nothing counts as lost
_NEXT_LOOK = 0.3
_LEFT_ALONE = ("network", "reboot")
_LAST_WORDS = "tarvel-daemon terminated unexpectedly!"


class Lost(Exception):
    """The card neither answers nor has it ended."""


@dataclass(frozen=True)
class Result:
    replies: list[tuple[str, bytes]]  # where a datagram went, and what came
    ended: bool  # the daemon, on the way
    last_line: str  # of the log of all this


class TargetCard:
    """One card for all attacks. Its network is never restarted and it never reboots: it must stay reachable."""

    def __init__(self, lan: tarvelsim.Lan, card: tarvelsim.Card, command: list[str]) -> None:
        self.card = card
        self._command = command
        self._lan = lan
        self._udp = UdpPeer(DEVICE, lan.address(DEVICE), card.planned_addresses()["eth0"])
        self._address = card.planned_addresses()["eth0"]
        self._fences = cycle(range(0x6000, 0x8000))
        self.rig = Rig(lan, card)
        self._factory = {path: card.inside.read_bytes(path) for path in _CONFIGURATIONS} | self.rig.part_numbers()
        self.tracer = Tracer(card, command)
        for program in _LEFT_ALONE:
            card.inside.fail(program, 0)

    def restore(self) -> None:
        """The settings and files of a new card, and nothing staged."""
        for path in self.rig.part_numbers():
            self.card.inside.remove(path)
        for path, content in self._factory.items():
            self.card.inside.write(path, content)
        for path in _LEFT_BEHIND:
            self.card.inside.remove(path)
        for name in self.card.inside.listdir(UPGRADE_FOLDER):
            self.card.inside.remove(f"{UPGRADE_FOLDER}/{name}")

    @cached_property
    def model(self) -> Card:
        """Of the restored card. Take a copy."""
        self.restore()
        model = self.rig.model(emulated=False)
        model.faults = {program: Fault(0) for program in _LEFT_ALONE}
        return model

    def patient_client(self) -> UdpPeer:
        return UdpPeer(DEVICE, self._lan.address(DEVICE), self._address)

    def start_plain(self) -> None:
        self.card.daemon.supervise(False)
        self.card.daemon.stop()
        self.card.daemon.start(self._command)

    # Jobs

    def play(self, job: Job, last_words: LastWords | None = None, patience: float = _NEXT_LOOK) -> Result:
        """Ends when the card has answered a later question, which is repeated after some patience, or has ended."""
        ends = len(self.card.daemon.exits)
        replies: list[tuple[str, bytes]] = []
        if job.over_tcp:
            replies += self._over_tcp(job, last_words)
        else:
            self._udp.send(job.data)
        self._udp.socket.settimeout(patience)
        return self._ask_later(ends, replies)

    def _over_tcp(self, job: Job, last_words: LastWords | None) -> list[tuple[str, bytes]]:
        try:
            with socket.create_connection((self._address, PORT), timeout=PATIENCE) as client:
                data = converse(client, job.data, last_words)
        except ConnectionError:
            return []
        return [("", data)] if data else []

    def _ask_later(self, ends: int, replies: list[tuple[str, bytes]]) -> Result:
        """A question that nobody knows is answered by every card that lives; it is repeated, as its answer may fail."""
        limit = time.monotonic() + PATIENCE
        while time.monotonic() < limit:
            if len(self.card.daemon.exits) > ends:
                return Result(replies, True, _LAST_WORDS)
            number = next(self._fences)
            try:
                self._udp.send(request(number))
                self._receive_until(number, replies)
                return Result(replies, False, f"Unknown command ID: 0x{number:x}")
            except OSError:  # a time-out, or a port that is closed
                continue
        raise Lost(f"{self.card.name} does not answer; {self.card.records.log_lines()[-5:]}")

    def _receive_until(self, number: int, replies: list[tuple[str, bytes]]) -> None:
        while True:
            answer = self._udp.receive()
            command = answer.header.command
            if command == number | 0x8000:
                return
            if not 0xE000 <= command:  # the answer to an earlier question
                replies.append((answer.destination, answer.message.encode()))

    # Afterwards

    def staged(self) -> list[str]:
        """The keys of settings that were changed and not committed."""
        changes = self.card.inside.uci("changes").splitlines()
        return [change.lstrip("-").partition("=")[0] for change in changes]

    def complaints(self) -> list[str]:
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
