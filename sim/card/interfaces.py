# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the options of an interface mean to the platform's network daemon: it is strict, and a mistake costs all of it."""

import re
import socket
import struct
from dataclasses import dataclass, field

_LONGEST_PREFIX = 32


class Refused(ValueError):
    """The interface gets no address; the text is the daemon's own word for the reason."""


@dataclass
class Interface:
    section: str
    device: str
    proto: str
    addresses: list[str] = field(default_factory=list)  # each with its prefix length
    gateway: str | None = None
    errors: list[str] = field(default_factory=list)

    @staticmethod
    def of(section: str, options: dict[str, str]) -> "Interface":
        device = options.get("device", options.get("ifname", ""))
        interface = Interface(section, device, options.get("proto", "none"))
        if interface.proto == "static":
            try:
                interface._take_settings(options)
            except Refused as error:
                interface.errors.append(str(error))
        return interface

    def _take_settings(self, options: dict[str, str]) -> None:
        prefix = _prefix_length(options.get("netmask", str(_LONGEST_PREFIX)), "INVALID_NETMASK")
        addresses = [_address_with_prefix(word, prefix) for word in options.get("ipaddr", "").split()]
        gateway = options.get("gateway")
        if gateway is not None and addresses:
            _require_address(gateway, "INVALID_GATEWAY")
        self.addresses, self.gateway = addresses, gateway


def _require_address(text: str, otherwise: str) -> None:
    """Four decimal numbers: what other tools take for an address, 10.11 or 0x0a000001, is none here."""
    try:
        socket.inet_pton(socket.AF_INET, text)
    except (OSError, ValueError):
        raise Refused(otherwise) from None


def _address_with_prefix(word: str, prefix: int) -> str:
    address, slash, own_prefix = word.partition("/")
    _require_address(address, "INVALID_ADDRESS")
    return f"{address}/{_prefix_length(own_prefix, 'INVALID_ADDRESS') if slash else prefix}"


def _number(text: str) -> int:
    """As C reads one: 0x10, 020 and 16 are the same. Python reads more, and refuses 020."""
    found = re.fullmatch(r"0[xX](?P<b16>[0-9a-fA-F]+)|(?P<b8>0[0-7]*)|(?P<b10>[1-9][0-9]*)", text)
    if found is None or found.lastgroup is None:
        raise ValueError(text)
    return int(found[found.lastgroup], int(found.lastgroup.removeprefix("b")))


def _prefix_length(netmask: str, otherwise: str) -> int:
    """A mask counts as far as its first zero; without a dot it is a number of bits, in any base that C knows."""
    try:
        if "." not in netmask:
            length = _number(netmask)
        else:
            (mask,) = struct.unpack(">I", socket.inet_aton(netmask))
            length = _LONGEST_PREFIX - (~mask & 0xFFFFFFFF).bit_length()
    except (OSError, ValueError):
        raise Refused(otherwise) from None
    if not 0 <= length <= _LONGEST_PREFIX:
        raise Refused(otherwise)
    return length
