# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The two kinds of clients."""

import select
import socket
import struct
from collections.abc import Iterator
from dataclasses import dataclass
from itertools import cycle
from types import TracebackType

from tarvelsim.waiting import wait_for
from wire import HEADER_SIZE, Header, Message, reply_to, request
from wire.numbers import PORT

PATIENCE = 120.0  # seconds; only a test that fails waits that long
UNTIL_ASKED_AGAIN = 0.3  # seconds, where what is asked may be lost
BROADCAST = "255.255.255.255"
_IP_PKTINFO = 8  # not among Python's constants; Linux tells with it where a datagram was sent to
_PKTINFO = struct.Struct("=i4s4s")
# Commands that nobody knows and no test uses otherwise: their answers tell where a sequence of events ends. From 0x8000 on
# they would be replies.
_UNKNOWN_COMMANDS: Iterator[int] = cycle(range(0x6000, 0x8000))


class ConnectionEnded(Exception):
    """The card closed the connection in place of an answer."""


def next_unknown_command() -> int:
    return next(_UNKNOWN_COMMANDS)


class TcpPeer:
    def __init__(self, address: str) -> None:
        self.socket = socket.create_connection((address, PORT), timeout=PATIENCE)
        self.port: int = self.socket.getsockname()[1]

    def send(self, data: bytes) -> None:
        self.socket.sendall(data)

    def receive(self) -> Message:
        header = Header.decode(self._receive_exactly(HEADER_SIZE))
        return Message(header, self._receive_exactly(header.payload_length))

    def ask(self, data: bytes) -> Message:
        self.send(data)
        return self.receive()

    def _receive_exactly(self, size: int) -> bytes:
        data = b""
        while len(data) < size:
            piece = self.socket.recv(size - len(data))
            if not piece:
                raise ConnectionEnded(f"after {len(data)} of {size} bytes")
            data += piece
        return data

    def rest(self) -> bytes:
        """Everything that comes until the card closes the connection."""
        data = b""
        try:
            while piece := self.socket.recv(4096):
                data += piece
        except ConnectionResetError:
            pass  # closed while some of our bytes were unread
        return data

    def has_answer(self) -> bool:
        self.socket.setblocking(False)
        try:
            return self.socket.recv(1, socket.MSG_PEEK) != b""
        except BlockingIOError:
            return False
        finally:
            self.socket.settimeout(PATIENCE)

    def end_sending(self) -> None:
        self.socket.shutdown(socket.SHUT_WR)

    def reset(self) -> None:
        """Gives the connection up at once; what is on its way is lost."""
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        self.socket.close()

    def close(self) -> None:
        """Returns when the card has closed its end, too."""
        try:
            self.end_sending()
            self.rest()
        except OSError:
            pass  # not connected any more
        self.socket.close()

    def __enter__(self) -> "TcpPeer":
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()


@dataclass(frozen=True)
class Answer:
    """A datagram, and the addresses it was sent to and came from."""

    message: Message
    destination: str
    sender: str

    @property
    def header(self) -> Header:
        return self.message.header

    @property
    def text(self) -> str:
        return self.message.text


def _open(device: str, port: int) -> socket.socket:
    opened = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    opened.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
    opened.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, device.encode() + b"\0")
    opened.setsockopt(socket.IPPROTO_IP, _IP_PKTINFO, 1)
    opened.settimeout(PATIENCE)
    opened.bind(("", port))
    return opened


class UdpPeer:
    """A client on one of the LAN's devices; it talks to one card unless told otherwise."""

    def __init__(self, device: str, own_address: str, card_address: str, port: int = 0) -> None:
        self.own_address = own_address
        self.card_address = card_address
        self.socket = _open(device, port)
        self.port: int = self.socket.getsockname()[1]
        if port == 0 and self.port == PORT:  # by chance; a hardened card answers nobody who has it
            first, self.socket = self.socket, _open(device, port)
            first.close()
            self.port = self.socket.getsockname()[1]

    def send(self, data: bytes, to: str | None = None) -> None:
        self.socket.sendto(data, (to or self.card_address, PORT))

    def receive(self) -> Answer:
        data, ancillary, _, (sender, _) = self.socket.recvmsg(65536, socket.CMSG_SPACE(_PKTINFO.size))
        destination = next(
            _PKTINFO.unpack(value[: _PKTINFO.size])[2] for _, kind, value in ancillary if kind == _IP_PKTINFO
        )
        return Answer(Message.decode(data), socket.inet_ntoa(destination), sender)

    def has_datagram(self, patience: float = 0) -> bool:
        return bool(select.select([self.socket], [], [], patience)[0])

    def ask(self, data: bytes, to: str | None = None) -> Answer:
        self.send(data, to)
        return self.receive()

    def ask_until_answered(self, data: bytes, to: str | None = None) -> Answer:
        """The first answer of a card whose network has just come up: a cable may swallow datagrams for a moment more."""

        def answer() -> Answer | None:
            self.send(data, to)
            return self.receive() if self.has_datagram(UNTIL_ASKED_AGAIN) else None

        return wait_for(answer, PATIENCE, lambda: "the card is never heard again")

    def is_ignored(self, data: bytes, to: str | None = None) -> bool:
        self.send(data, to)
        return self.settle() == []

    def settle(self) -> list[Answer]:
        """The answers that come before the one to a later question."""
        command = next_unknown_command()
        self.send(request(command))
        answers = [self.receive()]
        while answers[-1].header.command != reply_to(command):
            answers.append(self.receive())
        return answers[:-1]

    def logged(self, size: int) -> str:
        """What the card logs when so many bytes of this client arrive."""
        return f"info Got datagram of {size} bytes from {self.own_address} on port {self.port}"

    def close(self) -> None:
        self.socket.close()
