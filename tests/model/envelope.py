# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Who sends a request, and to whom: the attributes of its root element."""

from .card import Card
from .reader import ELEMENT, Reader

_ROOTS = ("IpConfiguration", "RebootCard")


def parse_envelope(card: Card, text: bytes) -> tuple[str, str] | None:
    """From and To; None after a warning."""
    with Reader(text) as reader:
        if not reader:
            card.warning("xmlReaderForDoc() failed: *")
            return None
        result = reader.read()
        if result != 1:
            card.warning("xmlTextReaderRead() failed: *" if result < 0 else "No data in XML")
            return None
        return _addresses(card, reader) if _is_root(card, reader) else None


def _is_root(card: Card, reader: Reader) -> bool:
    name = reader.name()
    if name is None:
        card.warning("Missing node name")
    elif not name.startswith(_ROOTS):
        card.warning(f"Wrong node name: {name}")
    elif reader.node_type() != ELEMENT:
        card.warning(f"Wrong node type: {reader.node_type()}")
    elif not reader.has_attributes():
        card.warning(f"No attributes in node: {name}")
    else:
        return True
    return False


def _addresses(card: Card, reader: Reader) -> tuple[str, str] | None:
    sender = reader.attribute("From")
    if sender is None:
        card.warning("xmlTextReaderGetAttribute() failed: *")
        card.warning("Datagram sender identity is missing")
        return None
    to = reader.attribute("To")
    if to is None:
        card.warning("xmlTextReaderGetAttribute() failed: *")
        card.warning("Datagram target is missing")
        return None
    return sender, to
