# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""One TCP connection: what the daemon sends for everything that a client sends before it ends its side."""

from wire import Message, golden

from . import firmware, header, loop, time_reference, versions
from .card import Card
from .header import Header
from .stream import Stream

_SCRATCH = 4096

# By command.
EXAMPLES = {number: exchange for number, exchange in golden.BY_NUMBER.items() if exchange in golden.TCP}


def serve_connection(card: Card, client: str, client_port: int, sent: bytes) -> Stream:
    """With the bytes of all replies; up to the wait for what comes after the connection."""
    stream = Stream(card, sent)
    try:
        loop.accept(card)
    except loop.Ended:
        loop.end(card, sockets=3)
        return stream
    card.info(f"Connection from {client} accepted on ports 50003/{client_port}")
    try:
        _serve(card, stream)
    except loop.Ended:
        loop.end(card, sockets=4)
        return stream
    loop.wait_for_the_next(card)
    return stream


def _serve(card: Card, stream: Stream) -> None:
    is_open = True
    while is_open:
        loop.wait(card)
        request = _next_request(stream)
        if request is not None:
            _handle(card, stream, request)
        elif card.refuses("close the connection"):
            card.warning(f"Failed to close socket (N): {card.why}")
        else:
            card.info("Socket (N) successfully closed")
            is_open = False


def _next_request(stream: Stream) -> Header | None:
    """None ends the connection."""
    data = stream.receive(header.SIZE)
    if data is None:
        return None
    request = Header.decode(data)
    status = _refusal(request)
    if status is None:
        return request
    stream.refuse(request, status)
    return None


def _refusal(request: Header) -> int | None:
    if request.version != header.VERSION:
        return header.WRONG_VERSION
    if request.device != header.DEVICE:
        return header.WRONG_DEVICE
    return None if request.service == header.SERVICE else header.WRONG_SERVICE


def _handle(card: Card, stream: Stream, request: Header) -> None:
    if request.command == 1:
        versions.report(card, stream, request)
    elif request.command in (7, 8):
        firmware.upload(card, stream, request)
    elif request.command == 16:
        time_reference.get(card, stream, request)
    elif request.command == 17:
        time_reference.set_(card, stream, request)
    elif request.command in EXAMPLES:
        _as_on_the_page(stream, request)
    else:
        _unknown(card, stream, request)


def _as_on_the_page(stream: Stream, request: Header) -> None:
    """Enough for a command without payload whose reply does not depend on the card."""
    reply = Message.decode(EXAMPLES[request.command].reply)
    text = reply.text.encode("utf-8", "surrogateescape") if reply.payload else None
    stream.answer(header.reply(request, header.SUCCESS, text))


def _unknown(card: Card, stream: Stream, request: Header) -> None:
    left = request.payload_length
    while left > 0:
        piece = min(left, _SCRATCH)
        if stream.receive(piece) is None:
            return
        left -= piece
    card.warning(f"Unknown command ID: 0x{request.command:x}")
    stream.answer(header.reply(request, header.UNKNOWN_COMMAND))
