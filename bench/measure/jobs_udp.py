# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Requests by datagram, beside both floors."""

from collections.abc import Iterator

import messages
from card import servers
from effort import Effort
from jobs_tcp import timed
from rows import Row, compare
from tarvelsim import Card

_SIDES = ("daemon", "same", "bare udp")
_BURST = 20  # dropped datagrams before one that is answered


def udp_rows(card: Card, effort: Effort) -> Iterator[Row]:
    with servers(card, _SIDES) as started:
        for name, request in (("device", messages.OTHER_DEVICE), ("name", messages.OTHER_NAME)):
            timing = timed(started, "burst", request, rounds=effort.quick, size=_BURST)
            yield from compare(f"datagram for another {name}", *timing)
        yield from compare("IP configuration get", *timed(started, "datagram", messages.IP_GET, rounds=effort.shell))
