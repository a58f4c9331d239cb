# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Times that are none of this card's."""

import pytest
from support.daemon import IS_HARDENED
from support.documents import time_reference
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request


@pytest.mark.parametrize("date_time", ["2106-02-07T06:28:16", "1900-01-01T00:00:00", "4294969317-01-01T00:00:00"])
def test_time_that_32_bit_seconds_cannot_hold(scratch_card: Card, watch: Watch, tcp: TcpPeer, date_time: str) -> None:
    status = tcp.ask(request(Command.TIME_SET, time_reference("Ntp", date_time=date_time))).header.status
    assert status == (Status.FAILURE if IS_HARDENED else Status.SUCCESS)
    assert watch.logged("warning DateTime is beyond what 32-bit seconds can hold") == IS_HARDENED
