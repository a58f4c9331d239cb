# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Captures written byte by byte: what travelled, when, and in which pieces."""

import socket
import struct
from pathlib import Path

CARD_PORT = 50003
_FILE_HEADER = struct.pack("<IHHiIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101)  # raw IPv4
_CLIENT, _CARD, _EVERYBODY = "10.0.0.1", "10.0.0.11", "255.255.255.255"
_MILLISECOND = 1000  # of the file's unit
_ACK_PUSH = 0x18


class Capture:
    """One client and one card. A packet comes a millisecond after the one before."""

    def __init__(self, client_port: int = 40000) -> None:
        self._packets: list[bytes] = []
        self._client_port = client_port
        self._sequence = {True: 1, False: 1}

    def tcp(self, data: bytes, from_card: bool = False) -> "Capture":
        ports = (CARD_PORT, self._client_port) if from_card else (self._client_port, CARD_PORT)
        sequence, acknowledged = self._sequence[from_card], self._sequence[not from_card]
        header = struct.pack("!HHIIBBHHH", *ports, sequence, acknowledged, 5 << 4, _ACK_PUSH, 65535, 0, 0)
        self._sequence[from_card] += len(data)
        self._add(socket.IPPROTO_TCP, from_card, header + data)
        return self

    def udp(self, data: bytes, from_card: bool = False) -> "Capture":
        """The card's go to everybody."""
        ports = (CARD_PORT, self._client_port) if from_card else (self._client_port, CARD_PORT)
        self._add(socket.IPPROTO_UDP, from_card, struct.pack("!HHHH", *ports, 8 + len(data), 0) + data)
        return self

    def _add(self, protocol: int, from_card: bool, content: bytes) -> None:
        to_client = _EVERYBODY if protocol == socket.IPPROTO_UDP else _CLIENT
        source, target = (_CARD, to_client) if from_card else (_CLIENT, _CARD)
        addresses = socket.inet_aton(source) + socket.inet_aton(target)
        head = struct.pack("!BBHHHBBH", 0x45, 0, 20 + len(content), 0, 0, 64, protocol, 0)
        self._packets.append(head + addresses + content)

    def write(self, path: Path) -> Path:
        with path.open("wb") as file:
            file.write(_FILE_HEADER)
            for number, packet in enumerate(self._packets):
                seconds, rest = divmod(number * _MILLISECOND, 1_000_000)
                file.write(struct.pack("<IIII", 1_600_000_000 + seconds, rest, len(packet), len(packet)) + packet)
        return path
