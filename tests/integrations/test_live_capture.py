# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The dissector on what really travelled between clients and a simulated card."""

from collections.abc import Iterator
from pathlib import Path

import pytest
import tarvelsim
from dissection import Dissection
from programs import ProgramError
from recording import recorded
from support.daemon import COMMAND
from support.peers import BROADCAST, TcpPeer, UdpPeer
from wire import golden, request

_UNKNOWN = request(0x7EEE, sequence=0x7EEEEEEE)


def _play(card: tarvelsim.Card, lan: tarvelsim.Lan) -> None:
    address = card.planned_addresses()["eth0"]
    with TcpPeer(address) as tcp:
        for exchange in golden.TCP:
            tcp.ask(exchange.request)
    udp = UdpPeer("lan0", lan.address("lan0"), address)
    for exchange in golden.UDP:
        udp.ask(exchange.request, to=BROADCAST)
    udp.ask(_UNKNOWN)


@pytest.fixture(scope="module")
def live(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Dissection]:
    lan = tarvelsim.Lan.current()
    with lan.card("card1", command=COMMAND) as card:
        for program in ("network", "reboot"):
            card.inside.fail(program, 0)
        path = tmp_path_factory.mktemp("capture") / "live.pcap"
        with recorded(path, ["lan0"]):
            _play(card, lan)
        yield Dissection(path)


def test_every_command_was_asked_and_answered(live: Dissection) -> None:
    rows = live.fields("tarvel.command", "tarvel.reply")
    commands = [row[0] for row in rows if row[1] == "0"]
    expected = [str(int.from_bytes(exchange.request[8:10], "little")) for exchange in golden.EVERY]
    assert commands == [*expected, str(0x7EEE)]
    assert [row[0] for row in rows if row[1] == "1"] == commands


def test_every_reply_knows_its_request(live: Dissection) -> None:
    rows = live.fields("frame.number", "tarvel.reply", "tarvel.request_in", "tarvel.response_in")
    requests = [row for row in rows if row[1] == "0"]
    replies = [row for row in rows if row[1] == "1"]
    assert [(row[0], row[3]) for row in requests] == [(row[2], row[0]) for row in replies]


def test_nothing_was_wrong_but_the_unknown_command(live: Dissection) -> None:
    assert live.complaints() == ["unknown command"]


def test_a_device_that_is_not_there_is_told(tmp_path: Path) -> None:
    with pytest.raises(ProgramError, match="does not record: .*lan77"), recorded(tmp_path / "none.pcap", ["lan77"]):
        pytest.fail("there is nothing to record")
