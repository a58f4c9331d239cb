# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The IP configuration that a card reports."""

import pytest
from support.documents import ip_configuration
from support.peers import BROADCAST, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

STATIC_1 = '<Interface Name="VemkEth1" Mode="Static" Address="10.0.0.11" Netmask="255.255.255.0"/>'
STATIC_2 = '<Interface Name="VemkEth2" Mode="Static" Address="10.0.1.11" Netmask="255.255.255.0"/>'
QUESTION = request(Command.IP_GET, ip_configuration(), sequence=6)


def document(first: str = STATIC_1, second: str = STATIC_2) -> str:
    return f'<IpConfiguration From="card1" To="mgmt">{first}{second}</IpConfiguration>'


def get(option: str, section: int = 1) -> str:
    return f"uci -q get network.lanvemt2eth{section}.{option} > /tmp/uci.tmp"


def change(card: Card, *changes: str) -> None:
    """Each is "1.proto=dhcp", or "1.proto" to remove the option."""
    for one in changes:
        card.inside.uci("set" if "=" in one else "delete", f"network.lanvemt2eth{one}")


@pytest.mark.parametrize("device", ["udp", "udp1"])
def test_configuration_is_broadcast_on_the_device_it_was_asked_for(
    card: Card, request: pytest.FixtureRequest, device: str
) -> None:
    peer: UdpPeer = request.getfixturevalue(device)
    answer = peer.ask(QUESTION)
    assert answer.text == document()
    assert answer.destination == BROADCAST


def test_answer_carries_the_requests_numbers(card: Card, udp: UdpPeer) -> None:
    answer = udp.ask(QUESTION)
    length = len(document()) + 5
    assert answer.header == Header(command=0x8003, message_format=1, status=1, sequence=6, payload_length=length)


def test_work_is_logged_with_the_whole_document(card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(QUESTION)
    assert watch.log() == [
        udp.logged(len(QUESTION)),
        "info Retrieving current IP configuration",
        "info No Gateway defined for vemEth1 interface",
        "info No Gateway defined for vemEth2 interface",
        "info copy to payload:",
        f"info {document()}",
    ]


def test_settings_are_read_in_order(card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(QUESTION)
    options = ("proto", "ipaddr", "netmask", "gateway")
    assert watch.commands() == [get(option, section) for section in (1, 2) for option in options]


def test_gateway_follows_the_netmask(scratch_card: Card, udp: UdpPeer) -> None:
    change(scratch_card, "1.gateway=10.0.0.254")
    assert udp.ask(QUESTION).text == document(STATIC_1.replace("/>", ' Gateway="10.0.0.254"/>'))


def test_missing_netmask_is_left_out(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    change(scratch_card, "2.netmask")
    assert udp.ask(QUESTION).text == document(second='<Interface Name="VemkEth2" Mode="Static" Address="10.0.1.11"/>')
    assert watch.logged("info No netmask defined for vemEth2 interface")


@pytest.mark.parametrize(("proto", "mode"), [("dhcp", "Dhcp"), ("none", "Disabled")])
def test_stale_addresses_are_neither_reported_nor_read(
    scratch_card: Card, udp: UdpPeer, watch: Watch, proto: str, mode: str
) -> None:
    change(scratch_card, f"1.proto={proto}", f"2.proto={proto}")
    assert udp.ask(QUESTION).text == document(
        f'<Interface Name="VemkEth1" Mode="{mode}"/>', f'<Interface Name="VemkEth2" Mode="{mode}"/>'
    )
    assert watch.commands() == [get("proto", 1), get("proto", 2)]


def test_values_are_copied_unescaped(scratch_card: Card, udp: UdpPeer) -> None:
    change(scratch_card, '1.ipaddr=<"&>')
    assert 'Address="<"&>" Netmask' in udp.ask(QUESTION).text


FAILURES = [
    ("1.proto", ["info Error VEM Interface 1 Config"]),
    ("2.proto", ["warning Error VEM Interface 2 Config"]),
    ("1.proto=Static", ["warning Unsupported mode: Static", "info Error VEM Interface 1 Config"]),
    ("2.proto=pppoe", ["warning Unsupported mode: pppoe", "warning Error VEM Interface 2 Config"]),
    ("1.ipaddr", ["warning Retrieving IP address for static mode failed", "info Error VEM Interface 1 Config"]),
    ("2.ipaddr", ["warning Retrieving IP address for static mode failed", "warning Error VEM Interface 2 Config"]),
]


@pytest.mark.parametrize(("spoiled", "reasons"), FAILURES, ids=[spoiled for spoiled, _ in FAILURES])
def test_incomplete_settings_are_a_failure_of_the_whole_request(
    scratch_card: Card, udp: UdpPeer, watch: Watch, spoiled: str, reasons: list[str]
) -> None:
    change(scratch_card, spoiled)
    answer = udp.ask(QUESTION)
    assert (answer.header, answer.destination) == (Header(command=0x8003, status=2, sequence=6), BROADCAST)
    assert watch.log()[-len(reasons) :] == reasons
    assert not watch.logged("info copy to payload:")


def test_second_interface_is_not_read_when_the_first_fails(
    scratch_card: Card, udp: UdpPeer, watch: Watch
) -> None:
    change(scratch_card, "1.proto")
    udp.ask(QUESTION)
    assert watch.commands() == [get("proto")]


def test_nothing_is_written_to_standard_output(card: Card, udp: UdpPeer, watch: Watch) -> None:
    assert udp.ask(QUESTION).header.status == Status.SUCCESS
    assert watch.console() == ""


def test_uncommitted_changes_are_reported(scratch_card: Card, udp: UdpPeer) -> None:
    change(scratch_card, "1.proto=dhcp")
    assert scratch_card.inside.uci("changes", "network") == "network.lanvemt2eth1.proto='dhcp'"
    assert 'Name="VemkEth1" Mode="Dhcp"' in udp.ask(QUESTION).text
