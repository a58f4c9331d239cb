# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A card that answers over TCP and by broadcast whatever a test tells it to, however wrong."""

import socket
import threading
from collections.abc import Callable, Iterable
from types import TracebackType

from wire import HEADER_SIZE, Header, Message, reply_to
from wire.numbers import PORT, Status

Respond = Callable[[Message], bytes | None]  # None: no answer


def answer(request: Message, payload: bytes = b"", message_format: int = 0, status: int = Status.SUCCESS) -> bytes:
    """The reply a card would give."""
    header = Header(
        message_format=message_format,
        command=reply_to(request.header.command),
        status=status,
        sequence=request.header.sequence,
        payload_length=len(payload),
    )
    return header.encode() + payload


def _receive_exactly(connection: socket.socket, size: int) -> bytes:
    data = b""
    while len(data) < size:
        piece = connection.recv(size - len(data))
        if not piece:
            raise ConnectionError
        data += piece
    return data


class FakeTcpCard:
    """Listens on an address of its own on the loopback network; each connection gets one answer and is closed."""

    def __init__(self, respond: Respond, address: str = "127.0.0.77") -> None:
        self.address = address
        self.requests: list[Message] = []
        self._respond = respond
        self._socket = socket.create_server((address, PORT))
        self._thread = threading.Thread(target=self._serve)

    def __enter__(self) -> "FakeTcpCard":
        self._thread.start()
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None) -> None:
        self._socket.shutdown(socket.SHUT_RDWR)  # wakes the accept
        self._thread.join()
        self._socket.close()

    def _serve(self) -> None:
        while True:
            try:
                connection, _ = self._socket.accept()
            except OSError:
                return
            with connection:
                try:
                    self._answer(connection)
                except OSError:
                    pass  # the client had enough of it

    def _answer(self, connection: socket.socket) -> None:
        header = Header.decode(_receive_exactly(connection, HEADER_SIZE))
        request = Message(header, _receive_exactly(connection, header.payload_length))
        self.requests.append(request)
        reply = self._respond(request)
        if reply is not None:
            connection.sendall(reply)
        else:
            connection.recv(1)  # until the client gives up


class FakeUdpCard:
    """Hears the broadcasts of this host on one device and answers each with any number of datagrams, be it without end."""

    def __init__(self, respond: Callable[[Message], Iterable[bytes]], device: str = "lan0", port: int = PORT) -> None:
        self.requests: list[Message] = []
        self._respond = respond
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, device.encode())
        self._socket.bind(("", PORT))
        self._answers = self._socket
        if port != PORT:
            self._answers = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
            self._answers.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
            self._answers.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, device.encode())
            self._answers.bind(("", port))
        self._ending = threading.Event()
        self._socket.settimeout(0.05)
        self._thread = threading.Thread(target=self._serve)

    def __enter__(self) -> "FakeUdpCard":
        self._thread.start()
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None) -> None:
        self._ending.set()
        self._thread.join()
        self._answers.close()
        self._socket.close()

    def _serve(self) -> None:
        while not self._ending.is_set():
            try:
                data, (_, port) = self._socket.recvfrom(65536)
            except TimeoutError:
                continue
            if len(data) < HEADER_SIZE or port == PORT:
                continue
            request = Message.decode(data)
            self.requests.append(request)
            for reply in self._respond(request):
                if self._ending.is_set():
                    break
                self._answers.sendto(reply, ("255.255.255.255", port))
