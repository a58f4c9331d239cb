# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Datagrams: who is answered, where to, and what."""

from collections.abc import Callable
from dataclasses import dataclass

from . import header, ip_configuration, loop, platform
from .card import Card
from .envelope import parse_envelope
from .header import Header

BROADCAST = "255.255.255.255"
_BUFFER = 4096


@dataclass(frozen=True)
class Reply:
    destination: str
    data: bytes


class UdpPort:
    """One of the card's two, with the datagrams of one client."""

    def __init__(self, card: Card, client: str, client_port: int) -> None:
        self._card = card
        self._client = client
        self._client_port = client_port

    def receive(self, datagram: bytes) -> Reply | None:
        """Up to the wait for the next one."""
        if self._card.refuses("recvfrom"):  # it stays where it is
            self._card.warning(f"recvfrom() failed: {self._card.why}")
            loop.wait_for_the_next(self._card)
        answer = self._answer(datagram)
        if answer is not None and self._card.refuses("sendto"):
            self._card.warning(f"sendto() failed: {self._card.why}")
            answer = None
        loop.wait_for_the_next(self._card)
        return answer

    def _answer(self, datagram: bytes) -> Reply | None:
        data = datagram[:_BUFFER]
        self._card.info(f"Got datagram of {len(data)} bytes from {self._client} on port {self._client_port}")
        if len(data) < header.SIZE:
            self._card.warning(f"Datagram of {len(data)} bytes is too short for a header, drop it")
            return None
        request = Header.decode(data)
        refused, status = self._check(request)
        if refused:
            return None if status is None else Reply(self._client, header.reply(request, status))
        if request.command not in _COMMANDS:
            self._card.warning(f"Unknown command ID: 0x{request.command:x}")
            return Reply(self._client, header.reply(request, header.UNKNOWN_COMMAND))
        return self._handle(request, data)

    def _check(self, request: Header) -> tuple[bool, int | None]:
        """Whether the datagram ends here, and with which status it is answered, if at all."""
        card = self._card
        wrong_version = f"Wrong version field in header: {request.version} instead of {header.VERSION}"
        if request.service != header.SERVICE:
            card.warning(f"Wrong service field in header: {request.service} instead of {header.SERVICE}")
            if request.version != header.VERSION:
                card.warning(wrong_version)
                return True, header.WRONG_VERSION
            return True, header.WRONG_SERVICE
        if request.version != header.VERSION:
            card.warning(wrong_version)
            return True, header.WRONG_VERSION
        is_reply = request.command & header.REPLY_BIT != 0
        is_foreign = request.device != header.DEVICE
        if is_foreign:
            card.info(f"Got datagram for device {request.device}, drop it")
        if is_reply:
            card.info("Got a response from another card, drop it")
        return is_foreign or is_reply, None

    def _text(self, request: Header, data: bytes) -> bytes:
        """The section's bytes that really came."""
        if request.payload_length == 0:
            return b""
        keeps_order = request.message_format & 0x80 != 0
        order = "big" if keeps_order and self._card.big_endian else "little"
        size = int.from_bytes(data[20:24], order)  # type: ignore[arg-type]
        return data[24 : 24 + size]

    def _handle(self, request: Header, data: bytes) -> Reply | None:
        name, work = _COMMANDS[request.command]
        failure = Reply(BROADCAST, header.reply(request, header.FAILURE))
        if not request.has_only_text:
            self._card.warning(f"{name} message should only contain a 8-bit section!")
            return failure
        text = self._text(request, data)
        envelope = parse_envelope(self._card, text)
        if envelope is None:
            return failure
        sender, to = envelope
        if to != self._card.host_name:
            self._card.info(f'Message is for "{to}" not for me "{self._card.host_name}", drop it')
            return None
        answer = work(self._card, request, text, sender)
        return failure if answer is None else Reply(BROADCAST, answer)


def _set_ip(card: Card, request: Header, text: bytes, _sender: str) -> bytes | None:
    card.info("Configuring network interfaces")
    if not ip_configuration.configure(card, text):
        card.warning("Configuring network interfaces failed")
        return None
    command = "/etc/init.d/network restart"
    status = platform.run(card, command)
    if status == -1:
        card.warning(f"system() failed: {card.why}")
    if status != 0:
        card.warning(f"{command} FAILED")
    return header.reply(request, header.SUCCESS)


def _get_ip(card: Card, request: Header, _text: bytes, sender: str) -> bytes | None:
    document = ip_configuration.tell(card, sender)
    if document is None:
        return None
    text = document.encode("utf-8", "surrogateescape")
    if header.SIZE + 4 + len(text) + 1 > _BUFFER:
        card.warning("*")  # what is said here is not fixed
        return None
    return header.reply(request, header.SUCCESS, text)


def _reboot(card: Card, request: Header, _text: bytes, _sender: str) -> bytes | None:
    card.info("***** WARNING: Card will reboot in a few seconds *****")
    status = platform.run(card, "reboot -d 2 &")
    if status == -1:
        card.console.append(f"system() FAILED: {card.why}")
    if status != 0:
        card.warning("reboot command failed")
        return None
    return header.reply(request, header.SUCCESS)


_Work = Callable[[Card, Header, bytes, str], bytes | None]
_COMMANDS: dict[int, tuple[str, _Work]] = {
    3: ("IPConfigGet", _get_ip),
    4: ("IPConfigSet", _set_ip),
    9: ("RebootCard", _reboot),
}
