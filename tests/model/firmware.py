# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Commands 7 and 8: an archive is stored, unpacked, and with 8 installed."""

from . import header, platform
from .card import Card
from .header import Header
from .platform import ARCHIVE
from .stream import Stream

_UPGRADE_SCRIPT = "/lib/upgrade/fwupgrade"
_PIECE = 4096
_MODULUS = 1 << 32


def upload(card: Card, stream: Stream, request: Header) -> None:
    if not request.has_only_text:
        card.warning("FWUpgrade message should only contain a 8bit section!")
        stream.fail(request)
        return
    prefix = stream.receive(4)
    if prefix is None:
        return
    size = int.from_bytes(prefix, "little")
    if request.payload_length != (size + 4) % _MODULUS:
        card.debug("TarvelServiceTcp.cpp, line 171, in ProcessFWUpload(): oups!")
        stream.fail(request)
        return
    if not _store(card, stream, size) or not _unpack(card):
        stream.fail(request)
        return
    if card.refuses(f"remove {ARCHIVE}"):
        card.warning(f"Deleting {ARCHIVE} FAILED: {card.why}")
    else:
        card.upgrade_tree.pop(ARCHIVE, None)
    if request.command == 8:
        card.info("Upgrade process starting...")
    stream.answer(header.reply(request, header.SUCCESS))
    if request.command == 8:
        _upgrade(card)


def _store(card: Card, stream: Stream, size: int) -> bool:
    if card.refuses(f"open {ARCHIVE}"):
        card.warning(f"fopen() failed: {card.why}")
        return False
    card.upgrade_tree[ARCHIVE] = b""
    card.info(f"File size = {size}")
    is_complete = _copy(card, stream, size)
    # What fits into the stream's buffer is written when the stream is closed.
    if card.refuses(f"write {ARCHIVE}"):
        card.upgrade_tree[ARCHIVE] = b""
        card.warning("fclose() failed")
    if card.refuses(f"close {ARCHIVE}"):
        card.warning("fclose() failed")
    return is_complete


def _copy(card: Card, stream: Stream, size: int) -> bool:
    left = size
    while True:
        piece = _PIECE if left > _PIECE else left
        data = stream.receive(piece)
        if data is None:
            return False
        card.upgrade_tree[ARCHIVE] += data
        left -= piece
        if left == 0:
            return True


def _unpack(card: Card) -> bool:
    if not card.refuses("print"):
        card.console.append(f"Extracting files from {ARCHIVE} to /tmp/upgrade")
    if platform.run(card, f"tar -xzvf {ARCHIVE} -C /tmp/upgrade") == 0:
        return True
    if not card.refuses("print an error"):
        card.console.append("Extracting files from archive failed")
    return False


def _upgrade(card: Card) -> None:
    card.info(f"Starting {_UPGRADE_SCRIPT}")
    if platform.run(card, _UPGRADE_SCRIPT) == 0:
        card.info("SUCCESS")
    else:
        card.warning("Upgrade FAILED")
