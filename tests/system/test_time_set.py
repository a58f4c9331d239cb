# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Setting the time reference: what is run, logged and left behind."""

import pytest
from support.documents import time_reference
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

MARKER = "/var/timesettings.replication"
LOCK = "/var/timesettings.lock"
GET_SERVER = "uci -q get system.ntp.server > /tmp/uci.tmp"
NO_CHANGE = "info No change in NTP server configuration, keep current configuration file"
OLD_SERVER = "info Current NTP server address: 10.0.0.1"


def set_time(tcp: TcpPeer, text: str) -> Status:
    reply = tcp.ask(request(Command.TIME_SET, text, sequence=31))
    assert reply.header == Header(command=0x8011, status=reply.header.status, sequence=31)
    return Status(reply.header.status)


def scripts(*actions: str) -> list[str]:
    return [f"/etc/init.d/{name} {action}" for action in actions for name in ("ntpdate", "ntpd")]


def test_ntp_with_a_new_server_runs_exactly_these_commands(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert set_time(tcp, time_reference("Ntp", "10.0.0.5")) == Status.SUCCESS
    assert watch.commands() == [
        GET_SERVER,
        "uci -q set system.ntp.server=10.0.0.5",
        *scripts("enable", "stop", "start"),
    ]


def test_ntp_with_a_new_server_is_logged(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp", "10.0.0.5"))
    assert watch.log()[1:] == [
        "info Setting NTP time reference",
        OLD_SERVER,
        "info New NTP server address: 10.0.0.5",
    ]


def test_ntp_with_the_same_server_sets_nothing(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert set_time(tcp, time_reference("Ntp", "10.0.0.1")) == Status.SUCCESS
    assert watch.commands() == [GET_SERVER, *scripts("enable", "stop", "start")]
    assert watch.log()[-1] == NO_CHANGE


def test_ntp_makes_the_start_link(scratch_card: Card, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp"))
    assert "S65ntpd" in scratch_card.inside.listdir("/etc/rc.d")
    assert 'Mode="Ntp"' in tcp.ask(request(Command.TIME_GET)).text


def test_new_server_is_not_committed(scratch_card: Card, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp", "10.0.0.5"))
    assert scratch_card.inside.uci("changes") == "system.ntp.server='10.0.0.5'"
    assert 'NtpServer="10.0.0.5"' in tcp.ask(request(Command.TIME_GET)).text


@pytest.mark.as_designed("an NTP server is a plain address or host name")
def test_server_reaches_uci_unquoted(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp", "$((6*7)).example"))
    assert watch.calls("uci")[1] == "uci -q set system.ntp.server=42.example"


@pytest.mark.as_designed("an NTP server is a plain address or host name")
def test_empty_server_is_set_like_any_other(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp", ""))
    assert "uci -q set system.ntp.server=" in watch.commands()


def test_manual_runs_exactly_these_commands(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Manual", "10.0.0.5"))
    assert watch.commands() == [
        GET_SERVER,
        "uci -q set system.ntp.server=10.0.0.5",
        *scripts("disable", "stop"),
    ]


def test_manual_removes_the_start_link(scratch_card: Card, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp"))
    set_time(tcp, time_reference("Manual"))
    assert "S65ntpd" not in scratch_card.inside.listdir("/etc/rc.d")


def test_clock_that_the_kernel_refuses_to_set_is_a_failure(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    assert set_time(tcp, time_reference("Manual", date_time="2021-03-04T05:06:07")) == Status.FAILURE
    assert watch.log()[1:] == [
        "info Setting manual time reference",
        OLD_SERVER,
        "info New NTP server address: 10.0.0.1",
        NO_CHANGE,
        "info Setting unix time to 1614834367",
        "warning clock_settime() FAILED: Operation not permitted",
    ]


DATES = {
    "1970-01-01T00:00:00": 0,
    "2021-3-4T5:6:7": 1614834367,
    "2021-02-30T00:00:00": 1614643200,  # 2 March
    "2023-11-14T22:13:20": 1700000000,
    "2021-03-04T05:06:07 and more": 1614834367,
    "2020-13-01T24:60:60": 1609549260,
}


@pytest.mark.parametrize("date_time", DATES)
def test_date_and_time_are_taken_as_utc(scratch_card: Card, watch: Watch, tcp: TcpPeer, date_time: str) -> None:
    set_time(tcp, time_reference("Manual", date_time=date_time))
    assert watch.logged(f"info Setting unix time to {DATES[date_time]}")


@pytest.mark.parametrize("zone", ["XXX-11", "CET-1CEST,M3.5.0,M10.5.0/3"])
def test_local_time_zone_does_not_matter(
    scratch_card: Card, watch: Watch, addresses: dict[str, str], zone: str
) -> None:
    scratch_card.daemon.stop()
    scratch_card.daemon.start(env={"TZ": zone})
    with TcpPeer(addresses["eth0"]) as peer:
        set_time(peer, time_reference("Manual", date_time="2021-07-04T05:06:07"))
    assert watch.logged("info Setting unix time to 1625375167")


@pytest.mark.parametrize(
    ("mode", "status"), [("Ntp", Status.SUCCESS), ("Manual", Status.FAILURE), ("ntp", Status.FAILURE)]
)
def test_replication_marker_is_left_whatever_the_outcome(
    scratch_card: Card, tcp: TcpPeer, mode: str, status: Status
) -> None:
    assert set_time(tcp, time_reference(mode)) == status
    assert scratch_card.inside.read(MARKER) == ""


def test_marker_is_truncated_and_the_lock_file_stays_empty(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.write(MARKER, "old")
    set_time(tcp, time_reference("Ntp"))
    assert (scratch_card.inside.read(MARKER), scratch_card.inside.read(LOCK)) == ("", "")


def test_lock_file_is_made_with_mode_644(scratch_card: Card, tcp: TcpPeer) -> None:
    set_time(tcp, time_reference("Ntp"))
    assert scratch_card.inside.path(LOCK).stat().st_mode & 0o777 == 0o644


@pytest.mark.parametrize("name", ["ntpd", "ntpdate"])
@pytest.mark.parametrize("action", ["enable", "stop", "start"])
def test_failing_scripts_do_not_matter(scratch_card: Card, tcp: TcpPeer, name: str, action: str) -> None:
    scratch_card.inside.fail(name, matching=action)
    assert set_time(tcp, time_reference("Ntp")) == Status.SUCCESS


@pytest.mark.parametrize("mode", ["Ntp", "Manual"])
def test_server_that_cannot_be_read_stops_before_the_scripts(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, mode: str
) -> None:
    scratch_card.inside.uci("delete", "system.ntp.server")
    assert set_time(tcp, time_reference(mode, "10.0.0.5")) == Status.FAILURE
    assert watch.commands() == [GET_SERVER]
    assert watch.log()[2:] == []
    assert scratch_card.inside.exists(MARKER)


def test_server_that_cannot_be_set_stops_before_the_scripts(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.fail("uci", matching="set")
    assert set_time(tcp, time_reference("Ntp", "10.0.0.5")) == Status.FAILURE
    assert watch.commands() == [GET_SERVER, "uci -q set system.ntp.server=10.0.0.5"]


@pytest.mark.parametrize("mode", ["NTP", "ntp", "manual", "Manual ", ""])
def test_unsupported_mode_is_logged_and_runs_nothing(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, mode: str
) -> None:
    assert set_time(tcp, time_reference(mode)) == Status.FAILURE
    assert watch.log()[1:] == [f'warning Unsupported time reference mode "{mode}"']
    assert watch.commands() == []
