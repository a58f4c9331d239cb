# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The floor called "same" makes the calls that the daemon makes, no more and no less."""

import load
import messages
import pytest
from card import command_of, port_of
from server import Server
from tarvelsim import Card
from wire import request

_TRACE = "/run/card/trace"
_REQUESTS = 5
_MARK = 0x77
# Waiting, which may be for more than one socket; and how the allocator gets its memory.
_NO_WORK = {"select", "pselect6", "brk", "mmap", "munmap"}

_JOBS = {
    "unknown command": ("kept", messages.UNKNOWN, 0),
    "versions": ("kept", messages.VERSIONS, 0),
    "time reference get": ("kept", messages.TIME_GET, 0),
    "upload": ("upload", messages.upload_of(10_000), 10_000),
    "datagram for another device": ("burst", messages.OTHER_DEVICE, 0),
    "datagram for another name": ("burst", messages.OTHER_NAME, 1),
    "IP configuration get": ("datagram", messages.IP_GET, 0),
}


def mark(server: Server) -> None:
    """When the answer has come, all calls that were made before it have been written down."""
    load.ask("datagram", request(_MARK), [server.address], rounds=1)


def calls_of(card: Card, name: str, job: str) -> list[str]:
    """The names of the calls for some requests of a kind, but for those that wait."""
    kind, message, size = _JOBS[job]
    traced = ["strace", "-D", "-qq", "-s", "200", "-e", "signal=none", "-o", _TRACE, *command_of(name)]
    server = Server(card, name, traced, port_of(name))
    try:
        for rounds in (1, _REQUESTS):  # the first one does what is done but once
            load.ask(kind, message, [server.address], rounds=rounds, size=size)
            mark(server)
        lines = card.inside.read(_TRACE).splitlines()
    finally:
        server.stop()
    first, last = (number for number, line in enumerate(lines) if f"Unknown command ID: {_MARK:#x}" in line)
    names = [line.partition("(")[0] for line in lines[first + 2 : last]]
    return [name for name in names if name not in _NO_WORK]


@pytest.mark.parametrize("job", _JOBS)
def test_the_floor_makes_the_daemons_calls(measured: Card, job: str) -> None:
    assert calls_of(measured, "same", job) == calls_of(measured, "daemon", job)


def test_the_comparison_sees_the_calls_of_each_file(measured: Card) -> None:
    calls = calls_of(measured, "daemon", "versions")
    # Made at boot, flash, base system; directory; installed.
    assert calls.count("openat") == _REQUESTS * (2 + 1 + 1 + 1 + 3)

