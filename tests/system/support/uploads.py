# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How firmware is sent to a card."""

from wire import Command, Header, Sections

from .peers import TcpPeer


def send_upload(tcp: TcpPeer, data: bytes, command: Command) -> None:
    payload = Sections(data=data).encode()
    tcp.send(Header(command=command, message_format=1, payload_length=len(payload)).encode() + payload)
