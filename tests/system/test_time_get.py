# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The time reference that a card reports."""

import fcntl
import re
from datetime import datetime, timezone

import pytest
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

ELEMENT = re.compile(
    r'<TimeReferenceConfiguration Mode="(\w+)" NtpServer="(.*)" DateTime="(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d)"/>'
)
GET_SERVER = "uci -q get system.ntp.server > /tmp/uci.tmp"


def time_reference(tcp: TcpPeer) -> tuple[str, str, str]:
    found = ELEMENT.fullmatch(tcp.ask(request(Command.TIME_GET)).text)
    assert found is not None
    return found[1], found[2], found[3]


def utc_now() -> str:
    return datetime.now(timezone.utc).strftime("%Y-%m-%dT%H:%M:%S")


def test_date_and_time_are_those_of_the_clock_in_utc(card: Card, tcp: TcpPeer) -> None:
    before = utc_now()
    date_time = time_reference(tcp)[2]
    assert before <= date_time <= utc_now()


def test_local_time_zone_does_not_matter(scratch_card: Card, addresses: dict[str, str]) -> None:
    scratch_card.daemon.stop()
    scratch_card.daemon.start(env={"TZ": "XXX-11"})
    before = utc_now()
    with TcpPeer(addresses["eth0"]) as peer:
        date_time = time_reference(peer)[2]
    assert before <= date_time <= utc_now()


def test_mode_is_manual_without_the_start_link(card: Card, tcp: TcpPeer) -> None:
    assert time_reference(tcp)[:2] == ("Manual", "10.0.0.1")


def test_mode_is_ntp_with_the_start_link(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.write("/etc/rc.d/S65ntpd", "")
    assert time_reference(tcp)[0] == "Ntp"


def test_server_is_read_each_time(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    time_reference(tcp)
    scratch_card.inside.uci("set", "system.ntp.server=ntp.example")
    assert time_reference(tcp)[1] == "ntp.example"
    assert watch.commands() == [GET_SERVER, GET_SERVER]


def test_empty_server_is_not_configured(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.answer("uci", "\n", matching="get system.ntp.server")
    assert time_reference(tcp)[1] == "NOT CONFIGURED"


@pytest.mark.parametrize(
    ("line", "status"), [("option server ''", Status.FAILURE), ("list server ''", Status.SUCCESS)]
)
def test_empty_line_in_the_file_is_no_server_unless_it_is_a_list(
    scratch_card: Card, tcp: TcpPeer, line: str, status: Status
) -> None:
    scratch_card.inside.write("/etc/config/system", f"config timeserver 'ntp'\n\t{line}\n")
    assert tcp.ask(request(Command.TIME_GET)).header.status == status


def test_several_servers_are_told_in_one_line(scratch_card: Card, tcp: TcpPeer) -> None:
    lines = "".join(f"\tlist server '{server}'\n" for server in ("a.example", "b c"))
    scratch_card.inside.write("/etc/config/system", f"config timeserver 'ntp'\n{lines}")
    assert time_reference(tcp)[1] == "a.example 'b c'"


def test_missing_server_is_a_failure(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.uci("delete", "system.ntp.server")
    assert tcp.ask(request(Command.TIME_GET, sequence=3)).header == Header(command=0x8010, status=2, sequence=3)
    assert watch.console() == ""
    assert len(watch.log()) == 1  # the connection


def test_long_server_is_cut_at_99_characters(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.uci("set", f"system.ntp.server={'s' * 150}")
    assert time_reference(tcp)[1] == "s" * 99


def test_server_is_copied_unescaped(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.uci("set", 'system.ntp.server=a"<&')
    assert time_reference(tcp)[1] == 'a"<&'


def test_getting_is_not_logged(card: Card, watch: Watch, tcp: TcpPeer) -> None:
    time_reference(tcp)
    assert len(watch.log()) == 1  # the connection


def test_lock_is_not_needed_for_reading(scratch_card: Card, tcp: TcpPeer) -> None:
    with open(scratch_card.inside.path("/var/timesettings.lock"), "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX)
        assert tcp.ask(request(Command.TIME_GET)).header.status == Status.SUCCESS
