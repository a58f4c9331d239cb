# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What is played before anything random: each command as the protocol's page shows it, so that none is without a twin;
and the actions in which model and card once differed, each by the name of what was wrong in one of them.
"""

from model.card import PART_NUMBERS
from support.documents import interface, ip_configuration, time_reference
from wire import golden, request

from .actions import Action, Connection, Datagrams, Setup

HOST = "twin"
Case = tuple[Setup, Action]
_TOO_LARGE = interface("VemkEth1", "Static", "10.0.0.11", "4294967296")

CASES: dict[str, Case] = {
    **{str(exchange): (Setup(), Connection(exchange.request)) for exchange in golden.TCP},
    **{str(exchange): (Setup(), Datagrams("lan0", (exchange.request,))) for exchange in golden.UDP},
    "a datagram too short for a header is told": (Setup(), Datagrams("lan0", (b"", b"x" * 19))),
    "an answer in front of a header that is refused with bytes behind it": (
        Setup(),
        Connection(request(0x42) + request(0x43, version=2) + b"unread"),
    ),
    "a netmask that is a number beyond 32 bits": (
        Setup(),
        Datagrams("lan0", (request(4, ip_configuration(_TOO_LARGE, to=HOST)),)),
    ),
    "a line of the log that the card's C library cuts": (
        Setup(),
        Datagrams("lan0", (request(3, ip_configuration(to=HOST, sender="y" * 3700)),)),
    ),
    "a line of the log that ends in a newline, which the log does not keep": (
        Setup(),
        Datagrams("lan0", (request(4, ip_configuration('<Interface Name="&#10;" Mode="Dhcp"/>', to=HOST)),)),
    ),
    "a time before 1970, which no kernel takes": (
        Setup(),
        Connection(request(17, time_reference("Manual", "10.0.0.1", "1969-12-31T23:59:23"))),
    ),
    "a versions report that is full is told": (
        Setup(files={f"{PART_NUMBERS}{letter}": b"v" * 900 + b"\n" for letter in "abc"}),
        Connection(request(1)),
    ),
}
