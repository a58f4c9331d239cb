# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the daemon says and does before it serves."""

import os
import re

from support.daemon import bare, words
from support.descriptors import descriptors, is_closed_on_exec
from support.documents import ip_configuration
from support.peers import TcpPeer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request

FIRST_START = f"""\
info Starting...
info SVN revision: 1795:4041
info /tmp/upgrade successfully created
info Working directory successfully changed to /tmp/upgrade
info Stream socket (PEER) successfully created
info Stream socket (SERVER) successfully created
info Server socket options successfully set
info Bind() was successful
info Listen on port 50003 was successful
info Datagram socket (N) successfully created
info Server socket options successfully set
info Bind() was successful
info BindToDevice (eth0) was successful
info Datagram socket (N) successfully created
info Server socket options successfully set
info Bind() was successful
info BindToDevice (eth1) was successful
warning recv() failed: {words('Transport endpoint is not connected')}
info Socket (PEER) successfully closed""".splitlines()


def start_log(card: Card) -> list[str]:
    """The log with the descriptors of the two stream sockets named; those of the datagram sockets are "N"."""
    lines = [f"{line.level} {line.text}" for line in card.records.log_lines()]
    streams = re.findall(r"Stream socket \((\d+)\)", "\n".join(lines))
    names = dict(zip(streams, ("PEER", "SERVER"), strict=True))
    return [re.sub(r"\((\d+)\)", lambda found: f"({names.get(found[1], 'N')})", line) for line in lines]


def test_first_start_is_logged_in_order(scratch_card: Card) -> None:
    scratch_card.reset()
    assert start_log(scratch_card) == FIRST_START


def test_every_line_is_logged_as_tarveld_with_its_process(scratch_card: Card) -> None:
    scratch_card.reset()
    lines = scratch_card.records.log_lines(ident=None)
    identities = {(line.ident, line.pid) for line in lines if line.ident != "card"}
    assert len(identities) == 1
    ident, pid = identities.pop()
    assert ident == "tarveld" and pid is not None


def test_working_directory_that_is_there_already_is_not_mentioned(scratch_card: Card) -> None:
    scratch_card.daemon.stop()
    mark = scratch_card.records.log_mark()
    scratch_card.daemon.start()
    texts = [line.text for line in scratch_card.records.log_lines(mark)]
    assert texts[:4] == [
        "Starting...",
        "SVN revision: 1795:4041",
        "Working directory successfully changed to /tmp/upgrade",
        texts[3],
    ]
    assert texts[3].startswith("Stream socket")


def test_working_directory_is_tmp_upgrade(card: Card) -> None:
    assert os.readlink(f"/proc/{card.daemon.pid}/cwd").endswith("/tmp/upgrade")


def test_host_name_is_read_for_each_datagram_service(scratch_card: Card) -> None:
    scratch_card.reset()
    commands = [bare(command) for command in scratch_card.records.commands()]
    assert commands == ["uci -q get system.@system[0].hostname > /tmp/uci.tmp"] * 2


def test_host_name_is_not_read_again(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    tcp.ask(request(Command.VERSIONS))
    assert watch.commands() == []


def test_start_writes_nothing_to_standard_output(scratch_card: Card) -> None:
    scratch_card.reset()
    assert scratch_card.records.console() == ""


def test_broken_pipe_is_ignored(card: Card) -> None:
    status = open(f"/proc/{card.daemon.pid}/status", encoding="ascii").read()
    ignored = int(status.split("SigIgn:")[1].split()[0], 16)
    assert ignored >> 12 & 1  # signal 13


def test_three_sockets_are_left_to_serve(card: Card, watch: Watch) -> None:
    assert watch.log() == []
    listening = card.inside.run(["ss", "-Hlntu", "sport", "=", "50003"]).stdout.splitlines()
    locals_ = sorted(line.split()[4] for line in listening)
    assert locals_ == ["0.0.0.0%eth0:50003", "0.0.0.0%eth1:50003", "0.0.0.0:50003"]


def test_every_descriptor_is_closed_on_exec(card: Card, tcp: TcpPeer) -> None:
    tcp.ask(request(2))
    assert card.daemon.pid is not None
    kept = {
        number: target
        for number, target in descriptors(card.daemon.pid).items()
        if number > 2 and not is_closed_on_exec(card.daemon.pid, number)
    }
    assert kept == {}


def test_daemon_restarts_right_after_it_has_closed_a_connection(scratch_card: Card, tcp: TcpPeer) -> None:
    tcp.send(request(Command.VERSIONS, device=6))
    tcp.rest()  # the card has closed first, so its port lingers
    scratch_card.daemon.stop()
    scratch_card.daemon.start()
    assert scratch_card.daemon.pid is not None


def test_new_host_name_counts_from_the_next_start_on(scratch_card: Card, udp: UdpPeer) -> None:
    scratch_card.inside.uci("set", "system.@system[0].hostname=renamed")
    assert udp.is_ignored(request(Command.IP_GET, ip_configuration(to="renamed")))
    scratch_card.daemon.stop()
    scratch_card.daemon.start()
    assert udp.is_ignored(request(Command.IP_GET, ip_configuration(to="card1")))
    assert udp.ask(request(Command.IP_GET, ip_configuration(to="renamed"))).header.status == Status.SUCCESS
