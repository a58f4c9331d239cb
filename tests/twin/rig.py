# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The real daemon on a simulated card: plays actions and tells what came of them."""

import re
import shlex
import socket
from itertools import cycle
from pathlib import Path

import tarvelsim
from model import Card
from model.card import DRAV_FILE, FLASH_DEVICE, PART_NUMBERS, VEMK_FILE
from model.platform import files_below
from model.settings import Settings, Value
from model.stream import LastWords
from support.peers import BROADCAST, Answer, UdpPeer
from tarvelsim.records import LogLine, unescaped as _unescaped
from tarvelsim.waiting import wait_for
from wire import request
from wire.numbers import PORT

from . import configuration
from .actions import Action, Connection, Datagrams, Outcome, Setup
from .conversation import converse

UPGRADE_FOLDER = "/tmp/upgrade"
NTP_LINK = "/etc/rc.d/S65ntpd"
MARKER = "/var/timesettings.replication"
TCP = "tcp"  # among the ports
# Seconds until a card that says nothing will never do: the machine may be busy for a while.
_PATIENCE = 120.0
_DESCRIPTOR = re.compile(r"\(\d+\)")


class _Tail:
    """A file that only grows, from where it was read last."""

    def __init__(self, path: Path) -> None:
        self._path = path
        self._offset = path.stat().st_size if path.exists() else 0
        self._rest = ""

    def lines(self) -> list[str]:
        if not self._path.exists():
            return []
        with self._path.open("rb") as file:
            file.seek(self._offset)
            data = file.read()
        self._offset += len(data)
        *lines, self._rest = (self._rest + data.decode("utf-8", "backslashreplace")).split("\n")
        return lines


class Rig:
    def __init__(self, lan: tarvelsim.Lan, card: tarvelsim.Card) -> None:
        self._lan = lan
        self.card = card
        addresses = card.planned_addresses()
        self._address = addresses["eth0"]
        self._clients = {
            device: UdpPeer(device, lan.address(device), address)
            for device, address in (("lan0", addresses["eth0"]), ("lan1", addresses["eth1"]))
        }
        for peer in self._clients.values():
            peer.socket.settimeout(_PATIENCE)
        self._tcp = self._next_client()
        self._fences = cycle(range(0x6000, 0x8000))
        self._log = _Tail(card.records.log_path)
        self._commands = _Tail(card.directory / "commands")

    # State

    def model(self, emulated: bool) -> Card:
        """A model in the state of the card, whose daemon may be the one that is built for the real card."""
        files = {path: self.card.inside.read_bytes(path) for path in (DRAV_FILE, VEMK_FILE, FLASH_DEVICE)}
        files |= self.part_numbers()
        settings = Settings(self.settings())
        return Card(self.card.hostname or "", settings, files, big_endian=emulated, narrow_long=emulated)

    def prepare(self, setup: Setup) -> None:
        for path, content in setup.files.items():
            self.card.inside.remove(path)
            if content is not None:
                self.card.inside.write(path, content)
        if setup.options is not None:
            for path, text in configuration.files(setup.options, self.card.hostname or "").items():
                self.card.inside.write(path, text)
            for path in ("/tmp/.uci/network", "/tmp/.uci/system"):
                self.card.inside.remove(path)
        if setup.faults is not None:
            self.card.inside.heal()
            for program, fault in setup.faults.items():
                self.card.inside.fail(program, fault.status, fault.matching)

    def settings(self) -> dict[str, Value]:
        """With what is staged, as everybody reads them."""
        listing = self.card.inside.run(["sh", "-c", "uci show network; uci show system"]).stdout
        settings: dict[str, Value] = {}
        for line in listing.splitlines():
            key, _, text = line.partition("=")
            if key.count(".") == 2:
                words = shlex.split(text)
                settings[key] = words if len(words) > 1 else "".join(words)
        return settings

    def part_numbers(self) -> dict[str, bytes]:
        folder = self.card.inside.path(PART_NUMBERS)
        return {PART_NUMBERS + path.name: path.read_bytes() for path in folder.iterdir() if path.is_file()}

    def upgrade_tree(self) -> dict[str, bytes]:
        return files_below(self.card.inside.path(UPGRADE_FOLDER))

    def ports(self) -> dict[str, tuple[str, int]]:
        """Where the datagrams of each side come from, and the next connection."""
        ports = {device: (peer.own_address, peer.port) for device, peer in self._clients.items()}
        return ports | {TCP: self._tcp.getsockname()}

    # Actions

    def play(self, action: Action, last_words: LastWords | None) -> Outcome:
        if isinstance(action, Connection):
            replies = self._connect(action, last_words)
            self._fence(self._clients["lan0"])
        else:
            replies = self._send(action)
        log = self._log_up_to_fence()
        return Outcome(replies, log, [_unescaped(line) for line in self._commands.lines()])

    def _connect(self, action: Connection, last_words: LastWords | None) -> list[tuple[str, bytes]]:
        with self._tcp as client:
            client.connect((self._address, PORT))
            data = converse(client, action.data, last_words)
        self._tcp = self._next_client()
        return [("", data)] if data else []

    def _next_client(self) -> socket.socket:
        """Has its port before it is connected, so that the log can be foreseen."""
        client = socket.socket()
        client.settimeout(_PATIENCE)
        client.bind((self._clients["lan0"].own_address, 0))
        return client

    def _send(self, action: Datagrams) -> list[tuple[str, bytes]]:
        peer = self._clients[action.device]
        for datagram in action.datagrams:
            peer.send(datagram, to=BROADCAST if action.by_broadcast else None)
        answers = self._fence(peer)
        return [(answer.destination, answer.message.encode()) for answer in answers]

    def _fence(self, peer: UdpPeer) -> list[Answer]:
        """Asks what nobody knows: its answer comes after all others, and its line in the log, too."""
        self._fence_number = next(self._fences)
        peer.send(request(self._fence_number))
        answers = [peer.receive()]
        while answers[-1].header.command != self._fence_number | 0x8000:
            answers.append(peer.receive())
        return answers[:-1]

    def _log_up_to_fence(self) -> list[str]:
        end = f"warning Unknown command ID: 0x{self._fence_number:x}"
        lines: list[str] = []

        def look() -> bool:
            for line in map(LogLine.parse, self._log.lines()):
                if line.ident == "tarveld":
                    lines.append(_DESCRIPTOR.sub("(N)", f"{line.level} {line.text}"))
            return end in lines

        wait_for(look, _PATIENCE, lambda: f"no fence in {lines}")
        return lines[: lines.index(end) - 1]
