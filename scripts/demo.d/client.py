# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The operator's side: each operation is one request to the card, and prints what came of it."""

import itertools
import socket
import xml.etree.ElementTree as ET
from pathlib import Path

from narrator import show
from wire import HEADER_SIZE, Command, Format, Header, Message, Sections, Status, request, text_payload
from wire.numbers import PORT

_PATIENCE = 15  # seconds


class DemoError(Exception):
    """Something did not go as it should; the text says what."""


class Client:
    """Knows the card by its name, as an operator does, and finds its address by asking."""

    def __init__(self, card: str) -> None:
        self._card = card
        self._address = ""
        self._sequence = itertools.count(1)

    def versions(self) -> None:
        report = ET.fromstring(self._ask(Command.VERSIONS).text)
        show(f"{component.get('Id'):14}{component.get('Version')}" for component in report)

    def time(self) -> None:
        show([_attributes(ET.fromstring(self._ask(Command.TIME_GET).text))])

    def set_ntp(self, server: str) -> None:
        self._set_time("Ntp", server, "1970-01-01T00:00:00", Status.SUCCESS)

    def set_manual(self, date_time: str) -> None:
        """Expects to be refused."""
        server = ET.fromstring(self._ask(Command.TIME_GET).text).attrib["NtpServer"]
        self._set_time("Manual", server, date_time, Status.FAILURE)

    def ip(self) -> None:
        reply = self._broadcast(Command.IP_GET, f'<IpConfiguration From="demo" To="{self._card}"/>')
        show(_attributes(interface) for interface in ET.fromstring(reply.text))

    def set_ip(self, interface: str, address: str, netmask: str) -> None:
        element = f'<Interface Name="{interface}" Mode="Static" Address="{address}" Netmask="{netmask}"/>'
        document = f'<IpConfiguration From="demo" To="{self._card}">{element}</IpConfiguration>'
        self._broadcast(Command.IP_SET, document)
        self._address = ""
        show(["accepted"])

    def upgrade(self, archive: Path) -> None:
        payload = Sections(data=archive.read_bytes()).encode()
        self._ask(Command.UPGRADE, payload)
        show(["accepted"])

    def reboot(self) -> None:
        self._broadcast(Command.REBOOT, f'<RebootCard From="demo" To="{self._card}"/>')
        show(["accepted"])

    def _set_time(self, mode: str, server: str, date_time: str, expected: Status) -> None:
        values = f'Mode="{mode}" NtpServer="{server}" DateTime="{date_time}"'
        self._ask(Command.TIME_SET, text_payload(f"<TimeReferenceConfiguration {values}/>"), expected)
        show(["accepted" if expected == Status.SUCCESS else "refused"])

    def _find(self) -> str:
        """The address from which the card answers by name."""
        if not self._address:
            self._broadcast(Command.IP_GET, f'<IpConfiguration From="demo" To="{self._card}"/>')
        return self._address

    def _ask(self, command: Command, payload: bytes = b"", expected: Status = Status.SUCCESS) -> Message:
        header = Header(
            command=command,
            message_format=Format.SECTION_8 if payload else Format.NONE,
            sequence=next(self._sequence),
            payload_length=len(payload),
        )
        with socket.create_connection((self._find(), PORT), _PATIENCE) as connection:
            connection.sendall(header.encode() + payload)
            with connection.makefile("rb") as stream:
                head = stream.read(HEADER_SIZE)
                if len(head) < HEADER_SIZE:
                    raise DemoError(f"{self._card} closed the connection instead of answering command {command}")
                reply = Message.decode(head + stream.read(Header.decode(head).payload_length))
        return _checked(reply, command, expected)

    def _broadcast(self, command: Command, text: str) -> Message:
        """Sends to every card; only the one that is meant answers, to everybody."""
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as udp:
            udp.settimeout(_PATIENCE)
            udp.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
            udp.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, b"lan0")
            udp.sendto(request(command, text, sequence=next(self._sequence)), ("255.255.255.255", PORT))
            try:
                data, (self._address, _) = udp.recvfrom(4096)
            except TimeoutError:
                raise DemoError(f"{self._card} did not answer command {command}") from None
        return _checked(Message.decode(data), command, Status.SUCCESS)


def _checked(reply: Message, command: Command, expected: Status) -> Message:
    if reply.header.status != expected:
        raise DemoError(f"command {command} was answered with status {reply.header.status} instead of {expected}")
    return reply


def _attributes(element: ET.Element) -> str:
    return "  ".join(f"{name} {value}" for name, value in element.attrib.items())
