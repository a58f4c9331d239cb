# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Random messages, most of them such that they reach a handler."""

import struct
from dataclasses import replace
from random import Random

from wire import Header, Sections, golden

from . import archives, documents
from .actions import Action, Connection, Datagrams

# Commands that nobody knows; 0x6000 to 0x7fff are the rig's own.
_UNKNOWN = (0, 2, 5, 6, 10, 15, 18, 0x41, 0x42, 0x5FFF)
_MOST_IN_A_BATCH = 60_000  # bytes; the card's socket holds them while it works


def action(random: Random, host: str) -> Action:
    return _connection(random) if random.random() < 0.45 else _datagrams(random, host)


def _connection(random: Random) -> Connection:
    messages = [_stream_message(random) for _ in range(random.choice((1, 1, 2, 3, 5)))]
    data = b"".join(messages)
    if random.random() < 0.08:
        data = data[: random.randrange(len(data) + 1)]
    return Connection(data, len(messages))


def _datagrams(random: Random, host: str) -> Datagrams:
    device = random.choice(("lan0", "lan1"))
    chosen: list[bytes] = []
    for _ in range(random.choice((1, 2, 4, 8))):
        chosen.append(_datagram(random, host))
        if sum(map(len, chosen)) > _MOST_IN_A_BATCH:
            chosen.pop()
    return Datagrams(device, tuple(chosen), random.random() < 0.5)


def _stream_message(random: Random) -> bytes:
    kind = random.randrange(20)
    if kind < 4:
        return _text_message(random, 17, documents.time_reference(random))
    if kind < 6:
        return _upload(random)
    if kind < 10:
        return _bare(random, 1, random.choice((b"", b"", b"", _bare(random, 16))))
    if kind < 12:
        return random.choice((_bare(random, 16), random.choice(golden.TCP).request))
    if kind < 15:
        return _bare(random, random.choice(_UNKNOWN), random.randbytes(random.choice((0, 0, 4, 20, 4096, 5000))))
    if kind < 18:
        return _spoiled_header(random, _text_message(random, random.choice((1, 7, 16, 17)), b"<x/>"))
    if kind < 19:
        return _text_message(random, 17, random.randbytes(random.choice((0, 1, 1019, 1020))))
    return random.randbytes(random.randrange(1, 60))


def _datagram(random: Random, host: str) -> bytes:
    kind = random.randrange(20)
    if kind < 5:
        return _text_message(random, 3, documents.ip_request(random, host))
    if kind < 10:
        return _text_message(random, 4, documents.ip_change(random, host))
    if kind < 12:
        return _text_message(random, 9, documents.reboot_card(random, host))
    if kind < 14:
        return _bare(random, random.choice(_UNKNOWN), random.randbytes(random.choice((0, 4, 4076, 8980))))
    if kind < 17:
        good = _text_message(random, random.choice((3, 4, 9)), documents.ip_request(random, host))
        return _spoiled_header(random, good)
    if kind < 18:
        return _text_message(random, 3, documents.ip_request(random, host))[: random.randrange(0, 60)]
    if kind < 19:
        sender = b"y" * random.choice((3700, 3900, 4000, 8000))
        return _text_message(random, 3, b'<IpConfiguration To="%s" From="%s"/>' % (host.encode(), sender))
    return random.randbytes(random.choice((0, 1, 19, 20, 21, 40, 4096)))


def _bare(random: Random, command: int, payload: bytes = b"") -> bytes:
    header = Header(command=command, sequence=random.getrandbits(32), payload_length=len(payload))
    return header.encode() + payload


def _upload(random: Random) -> bytes:
    payload = Sections(data=archives.archive(random)).encode()
    header = Header(
        command=random.choice((7, 7, 8)), message_format=1, sequence=random.getrandbits(32), payload_length=len(payload)
    )
    if random.random() < 0.1:
        header = replace(header, payload_length=len(payload) + random.choice((-1, 1, 4)))
    return header.encode() + payload


def _text_message(random: Random, command: int, text: bytes) -> bytes:
    payload = Sections(data=text + random.choice((b"\0", b"\0", b"\0", b"", b"\0junk"))).encode()
    if random.random() < 0.05:
        size = random.choice((0, 1, len(text) - 1, len(text) + 500, 0xFFFFFFFF))
        payload = struct.pack("<I", size & 0xFFFFFFFF) + payload[4:]
    header = Header(command=command, message_format=1, sequence=random.getrandbits(32), payload_length=len(payload))
    return header.encode() + payload


def _spoiled_header(random: Random, message: bytes) -> bytes:
    header = Header.decode(message)
    change = random.choice(
        (
            {"version": random.choice((0, 2, 255))},
            {"device": random.choice((0, 4, 7))},
            {"service": random.choice((0, 3, 255))},
            {"version": 2, "device": 6, "service": 3},
            {"message_format": random.choice((0, 2, 3, 0x10, 0x11, 0x21, 0x81, 0xFF))},
            {"command": header.command | 0x8000},
            {"status": random.randrange(256), "command_version": random.randrange(256)},
            {"start_pattern": random.getrandbits(32)},
            {"payload_length": random.choice((0, 1, 3, 4, 5, 1024, 1025, 4096))},
        )
    )
    return replace(header, **change).encode() + message[20:]
