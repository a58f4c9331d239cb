# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Commands 3 and 4: the two interfaces are told and set."""

import re
import socket
from dataclasses import dataclass

from . import uci
from .card import Card
from .reader import ELEMENT, END_OF_ELEMENT, Reader


@dataclass(frozen=True)
class Interface:
    name: str
    internal: str
    section: str


FIRST = Interface("VemkEth1", "vemEth1", "network.lanvemt2eth1")
SECOND = Interface("VemkEth2", "vemEth2", "network.lanvemt2eth2")

_MODES = {"static": "Static", "dhcp": "Dhcp", "none": "Disabled"}
_NUMBER = re.compile(r"0[Xx][0-9A-Fa-f]+|0[0-7]*|[1-9][0-9]*")
_ADDRESS_OPTIONS = ("ipaddr", "netmask", "gateway")


# Telling


def tell(card: Card, asked_by: str) -> str | None:
    card.info("Retrieving current IP configuration")
    document = f'<IpConfiguration From="{card.host_name}" To="{asked_by}">'
    first = _element(card, FIRST)
    if first is None:
        card.info("Error VEM Interface 1 Config")
        return None
    second = _element(card, SECOND)
    if second is None:
        card.warning("Error VEM Interface 2 Config")
        return None
    document += first + second + "</IpConfiguration>"
    card.info("copy to payload:")
    card.info(document)
    return document


def _element(card: Card, interface: Interface) -> str | None:
    proto = uci.get(card, f"{interface.section}.proto")
    if proto is None:
        return None
    if proto not in _MODES:
        card.warning(f"Unsupported mode: {proto}")
        return None
    element = f'<Interface Name="{interface.name}" Mode="{_MODES[proto]}"'
    if proto == "static":
        address = uci.get(card, f"{interface.section}.ipaddr")
        if address is None:
            card.warning("Retrieving IP address for static mode failed")
            return None
        element += f' Address="{address}"'
        for option, attribute, word in (("netmask", "Netmask", "netmask"), ("gateway", "Gateway", "Gateway")):
            value = uci.get(card, f"{interface.section}.{option}")
            if value is None:
                card.info(f"No {word} defined for {interface.internal} interface")
            else:
                element += f' {attribute}="{value}"'
    return element + "/>"


# Setting


class _Stop(Exception):
    """Parsing is over."""

    def __init__(self, success: bool) -> None:
        super().__init__()
        self.success = success


def configure(card: Card, text: bytes) -> bool:
    with Reader(text) as reader:
        if not reader:
            card.warning("xmlReaderForDoc() failed: *")
            return False
        try:
            _parse(card, reader)
            parsed = True
        except _Stop as stop:
            parsed = stop.success
    uci.changes(card)
    modes = [uci.get(card, f"{interface.section}.proto") for interface in (FIRST, SECOND)]
    if parsed and None not in modes and modes != ["none", "none"]:
        return uci.commit(card)
    if parsed and modes == ["none", "none"]:
        card.info("Disabling both network interfaces is forbidden")
    uci.revert(card, "network")
    return False


def _parse(card: Card, reader: Reader) -> None:
    _advance(card, reader)
    while not _is_root(card, reader, ELEMENT):
        _advance(card, reader)
    _advance(card, reader)
    while not _stage(card, reader):
        _advance(card, reader)
    _advance(card, reader)
    if _stage(card, reader):
        _advance(card, reader)
    if not _is_root(card, reader, END_OF_ELEMENT):
        raise _Stop(False)


def _advance(card: Card, reader: Reader) -> None:
    result = reader.read()
    if result == 0:
        raise _Stop(True)
    if result < 0:
        card.warning("xmlTextReaderRead() failed: *")
        raise _Stop(False)


def _node_name(card: Card, reader: Reader) -> str:
    name = reader.name()
    if name is None:
        card.warning("Missing node name")
        raise _Stop(False)
    return name


def _is(card: Card, reader: Reader, prefix: str, node_type: int) -> bool:
    name = _node_name(card, reader)
    if not name.startswith(prefix):
        card.warning(f"Wrong node name: {name}")
        return False
    if reader.node_type() != node_type:
        card.warning(f"Wrong node type: {reader.node_type()}")
        return False
    return True


def _is_root(card: Card, reader: Reader, node_type: int) -> bool:
    return _is(card, reader, "IpConfiguration", node_type)


def _stage(card: Card, reader: Reader) -> bool:
    """True if the node was an interface."""
    if not _is(card, reader, "Interface", ELEMENT):
        return False
    if not reader.has_attributes():
        card.warning(f"No attributes in node: {reader.name()}")
        raise _Stop(False)
    section = _section(card, reader)
    mode = reader.attribute("Mode")
    if mode is None:
        card.warning('Getting attribute "Mode" FAILED')
        raise _Stop(False)
    if mode.startswith("Static"):
        _stage_static(card, reader, section)
    elif mode.startswith(("Dhcp", "Disabled")):
        _put(card, f"{section}.proto", "dhcp" if mode.startswith("Dhcp") else "none")
        for option in _ADDRESS_OPTIONS:
            uci.delete(card, f"{section}.{option}")
    else:
        card.warning(f"Unsupported interface mode: {mode}")
        raise _Stop(False)
    return True


def _section(card: Card, reader: Reader) -> str:
    name = reader.attribute("Name")
    if name is None:
        card.warning('Getting attribute "Name" failed')
        raise _Stop(False)
    for interface in (SECOND, FIRST):
        if name.startswith(interface.name):
            return interface.section
    card.warning(f"Unknown interface: {name}")
    raise _Stop(False)


def _stage_static(card: Card, reader: Reader, section: str) -> None:
    _put(card, f"{section}.proto", "static")
    for attribute, option in (("Address", "ipaddr"), ("Netmask", "netmask")):
        value = reader.attribute(attribute)
        if value is None:
            card.warning(f"Interface {attribute.lower()} is missing")
            raise _Stop(False)
        _put_address(card, f"{section}.{option}", value)
    gateway = reader.attribute("Gateway")
    if gateway is None:
        uci.delete(card, f"{section}.gateway")
    else:
        _put_address(card, f"{section}.gateway", gateway)


def _put(card: Card, key: str, value: str) -> None:
    if not uci.put(card, key, value):
        raise _Stop(False)


def _put_address(card: Card, key: str, value: str) -> None:
    if not _is_address(card, value):
        raise _Stop(False)
    _put(card, key, value)


def _is_address(card: Card, text: str) -> bool:
    """The forms of inet_aton(), and no text behind them, which some C libraries would let pass."""
    if card.narrow_long and _NUMBER.fullmatch(text):
        return True
    if re.search(r"[^0-9A-Fa-fXx.]", text):
        return False
    try:
        socket.inet_aton(text)
    except OSError:
        return False
    return True
