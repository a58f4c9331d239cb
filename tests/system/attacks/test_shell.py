# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a client tries to have the card's shell do."""

import pytest
from support.archives import archive
from support.daemon import IS_HARDENED
from support.documents import interface, ip_configuration, time_reference
from support.peers import TcpPeer, UdpPeer
from support.uploads import send_upload
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request

KEY_AS_A_FILE = "system.@system0.hostname"


def test_upload_of_a_file_named_like_the_key_of_the_host_name(scratch_card: Card, tcp: TcpPeer, udp: UdpPeer) -> None:
    send_upload(tcp, archive({KEY_AS_A_FILE: b""}), Command.UPLOAD)
    assert tcp.receive().header.status == (Status.FAILURE if IS_HARDENED else Status.SUCCESS)
    scratch_card.inside.write(f"/tmp/upgrade/{KEY_AS_A_FILE}", "")  # should it ever get there
    scratch_card.daemon.supervise(False)
    scratch_card.daemon.stop()
    scratch_card.daemon.start(wait=IS_HARDENED)
    if IS_HARDENED:
        assert udp.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND
    else:
        assert scratch_card.daemon.wait_exit(2).signal == 6


# Each makes the file, in the shell's own ways; they stand in an XML attribute.
TOUCHING_SERVERS = [
    "x; touch /tmp/ran",
    "x &amp; touch /tmp/ran",
    "x | touch /tmp/ran",
    "x &amp;&amp; touch /tmp/ran",
    "$(touch /tmp/ran)",
    "`touch /tmp/ran`",
    "x&#10;touch /tmp/ran",
    "x &gt; /tmp/ran",
]


@pytest.mark.parametrize("server", TOUCHING_SERVERS)
def test_command_in_an_ntp_server(scratch_card: Card, watch: Watch, tcp: TcpPeer, server: str) -> None:
    status = tcp.ask(request(Command.TIME_SET, time_reference(server=server))).header.status
    assert scratch_card.inside.exists("/tmp/ran") != IS_HARDENED
    if IS_HARDENED:
        assert status == Status.FAILURE
        assert any(line.endswith("is neither an address nor a host name, refused") for line in watch.log())


@pytest.mark.parametrize("server", ["-P", "10.9.9.9 network.lanvemt2eth1.ipaddr=6.6.6.6", "", "*"])
def test_ntp_server_that_is_more_than_one_word_or_none(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, server: str
) -> None:
    status = tcp.ask(request(Command.TIME_SET, time_reference(server=server))).header.status
    staged = [command for command in watch.commands() if "uci -q set" in command]
    assert len(staged) == (0 if IS_HARDENED else 1)
    assert status == Status.FAILURE or not IS_HARDENED


@pytest.mark.parametrize("server", ["10.9.9.9", "time-1.example", "fd00::1"])
def test_plain_ntp_server_is_set_by_both_builds(scratch_card: Card, tcp: TcpPeer, server: str) -> None:
    assert tcp.ask(request(Command.TIME_SET, time_reference(server=server))).header.status == Status.SUCCESS
    assert scratch_card.inside.uci("get", "system.ntp.server") == server


@pytest.mark.parametrize("server", ["", "10.0.0.1 10.0.0.2"])
def test_present_ntp_server_is_kept_by_both_builds(scratch_card: Card, tcp: TcpPeer, server: str) -> None:
    scratch_card.inside.answer("uci", f"{server}\n", matching="get system.ntp.server")
    assert tcp.ask(request(Command.TIME_SET, time_reference(server=server))).header.status == Status.SUCCESS


@pytest.mark.parametrize("text", [f"10.0.0.9{server.removeprefix('x')}" for server in TOUCHING_SERVERS])
@pytest.mark.parametrize("place", ["address", "netmask", "gateway"])
def test_command_in_an_address(scratch_card: Card, watch: Watch, udp: UdpPeer, text: str, place: str) -> None:
    plain = {"address": "10.0.0.9", "netmask": "255.0.0.0", "gateway": "10.0.0.1"}
    document = ip_configuration(interface("VemkEth1", "Static", **{**plain, place: text}))
    assert udp.ask(request(Command.IP_SET, document)).header.status == Status.FAILURE
    assert watch.commands()[-1].endswith("uci -q revert network")
    assert not scratch_card.inside.exists("/tmp/ran")


@pytest.mark.parametrize("attributes", [("VemkEth1; touch /tmp/ran", "Dhcp"), ("VemkEth1", "Dhcp; touch /tmp/ran")])
def test_command_in_the_name_or_the_mode_of_an_interface(
    scratch_card: Card, udp: UdpPeer, attributes: tuple[str, str]
) -> None:
    """Only how they begin is looked at, and what follows goes nowhere."""
    document = ip_configuration(interface(*attributes))
    assert udp.ask(request(Command.IP_SET, document)).header.status == Status.SUCCESS
    scratch_card.records.wait_command("/etc/init.d/network restart")
    assert scratch_card.inside.uci("get", "network.lanvemt2eth1.proto") == "dhcp"
    assert not scratch_card.inside.exists("/tmp/ran")
