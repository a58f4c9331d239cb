# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A fixed series of requests of every kind, always in the same order."""

from support.documents import interface, ip_configuration, reboot_card, time_reference
from support.peers import TcpPeer, UdpPeer
from tarvelsim import Card
from wire import Command, request

_OFTEN = 20
_SELDOM = 4  # those that start programs
_ARCHIVE = bytes(100_000)


def ask_everything(card: Card, tcp: TcpPeer, udp: UdpPeer) -> None:
    card.inside.fail("reboot")
    card.inside.fail("network")
    _ask_tcp(tcp)
    _ask_udp(card, udp)


def _ask_tcp(tcp: TcpPeer) -> None:
    for _ in range(_OFTEN):
        tcp.ask(request(0x42))
        tcp.ask(request(Command.VERSIONS))
    for _ in range(_SELDOM):
        tcp.ask(request(Command.TIME_GET))
        tcp.ask(request(Command.TIME_SET, time_reference()))
        tcp.ask(request(Command.UPLOAD, _ARCHIVE))


def _ask_udp(card: Card, udp: UdpPeer) -> None:
    configuration = ip_configuration(
        interface("VemkEth1", "Static", card.address("eth0"), "255.255.255.0"),
        interface("VemkEth2", "Dhcp"),
        to=card.hostname,
    )
    for _ in range(_OFTEN):
        udp.ask(request(0x42))
        udp.is_ignored(request(Command.IP_GET, ip_configuration(to="card9")))
        udp.is_ignored(request(Command.IP_GET, ip_configuration(to="card9"), device=7))
    for _ in range(_SELDOM):
        udp.ask(request(Command.IP_GET, ip_configuration(to=card.hostname)))
        udp.ask(request(Command.IP_SET, configuration))
        udp.ask(request(Command.REBOOT, reboot_card(to=card.hostname)))
