# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""IP configurations that are refused, and how far each has come by then."""

import pytest
from support.documents import envelope, interface, ip_configuration
from support.peers import UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Header, Status, request

DHCP = interface("VemkEth1", "Dhcp")
DHCP_2 = interface("VemkEth2", "Dhcp")
FAILED = "warning Configuring network interfaces failed"
START = "info Configuring network interfaces"
NOT_TEXT = "warning Wrong node name: #text"


def ask(udp: UdpPeer, content: str) -> Header:
    return udp.ask(request(Command.IP_SET, envelope("IpConfiguration", content))).header


def is_refused(udp: UdpPeer, watch: Watch, content: str) -> bool:
    """Refused with everything that was staged taken back, and nothing committed or restarted."""
    header = ask(udp, content)
    commands = watch.commands()
    return header.status == Status.FAILURE and commands[-1] == "uci -q revert network"


REFUSALS = [
    ("no attributes", "<Interface/>", ["warning No attributes in node: Interface"]),
    ("no name", interface(None, "Dhcp"), ['warning Getting attribute "Name" failed']),
    ("no mode", interface("VemkEth1", None), ['warning Getting attribute "Mode" FAILED']),
    ("unknown name", interface("VemkEth3", "Dhcp"), ["warning Unknown interface: VemkEth3"]),
    ("short name", interface("VemkEth", "Dhcp"), ["warning Unknown interface: VemkEth"]),
    ("unknown mode", interface("VemkEth1", "dhcp"), ["warning Unsupported interface mode: dhcp"]),
    ("no address", interface("VemkEth1", "Static"), ["warning Interface address is missing"]),
    ("no netmask", interface("VemkEth1", "Static", "10.0.0.9"), ["warning Interface netmask is missing"]),
    (
        "start and end tag",
        DHCP.replace("/>", "></Interface>"),
        ["warning Wrong node type: 15", "warning Wrong node name: Interface"],
    ),
    ("blank between", DHCP + " " + DHCP_2, [NOT_TEXT, NOT_TEXT]),
    ("line end behind", DHCP + "\n", [NOT_TEXT, NOT_TEXT]),
    ("three interfaces", DHCP + DHCP_2 + DHCP, ["warning Wrong node name: Interface"]),
    ("comment behind", DHCP + "<!-- x -->", ["warning Wrong node name: #comment"] * 2),
    (
        "both disabled",
        interface("VemkEth1", "Disabled") + interface("VemkEth2", "Disabled"),
        ["info Disabling both network interfaces is forbidden"],
    ),
]


@pytest.mark.parametrize(("content", "reasons"), [case[1:] for case in REFUSALS], ids=[case[0] for case in REFUSALS])
def test_refusal_is_logged_with_its_reason(
    scratch_card: Card, udp: UdpPeer, watch: Watch, content: str, reasons: list[str]
) -> None:
    assert is_refused(udp, watch, content)
    assert watch.log()[1:] == [START, *reasons, FAILED]


def test_refused_change_leaves_nothing_behind(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    before = scratch_card.inside.uci("show", "network")
    assert is_refused(udp, watch, DHCP + interface("VemkEth2", "Static", "10.0.1.9"))
    assert scratch_card.inside.uci("changes") == ""
    assert scratch_card.inside.uci("show", "network") == before
    assert scratch_card.address("eth0") == "10.0.0.11"


def test_changes_of_other_configurations_survive_a_refusal(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.uci("set", "system.ntp.server=10.9.9.9")
    assert is_refused(udp, watch, interface("VemkEth3", "Dhcp"))
    assert scratch_card.inside.uci("changes") == "system.ntp.server='10.9.9.9'"


def test_disabling_the_second_of_two_interfaces_is_refused(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.uci("set", "network.lanvemt2eth2.proto=none")
    scratch_card.inside.uci("commit", "network")
    assert is_refused(udp, watch, interface("VemkEth1", "Disabled"))
    assert watch.logged("info Disabling both network interfaces is forbidden")


@pytest.mark.parametrize("option", ["lanvemt2eth1.proto", "lanvemt2eth2.proto"])
def test_mode_that_cannot_be_read_back_is_a_failure(
    scratch_card: Card, udp: UdpPeer, watch: Watch, option: str
) -> None:
    scratch_card.inside.fail("uci", matching=f"get network.{option}")
    assert is_refused(udp, watch, DHCP)
    assert [command for command in watch.commands() if " get " in command] == [
        "uci -q get network.lanvemt2eth1.proto > /tmp/uci.tmp",
        "uci -q get network.lanvemt2eth2.proto > /tmp/uci.tmp",
    ]


def test_document_that_breaks_off_is_a_failure(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    text = ip_configuration(DHCP)[: -len("</IpConfiguration>")] + "<"
    assert udp.ask(request(Command.IP_SET, text)).header.status == Status.FAILURE
    assert watch.commands()[-1] == "uci -q revert network"
    assert any(line.startswith("warning xmlTextReaderRead() failed: ") for line in watch.log())


BAD_ADDRESSES = ["", "1.2.3.256", "1.2.3.4.5", "me", " 10.0.0.1", "10.0.0.1 ", "1.2.3.4 ;reboot", "::1", "10.0.0.1/8"]


@pytest.mark.parametrize("address", BAD_ADDRESSES)
def test_bad_address_is_told_on_standard_error(
    scratch_card: Card, udp: UdpPeer, watch: Watch, address: str
) -> None:
    assert is_refused(udp, watch, interface("VemkEth1", "Static", address, "255.255.255.0"))
    assert f"{address} is not a valid IP address\n" in watch.console()
    assert not any("ipaddr" in command for command in watch.commands())
    assert watch.log()[1:] == [START, FAILED]


@pytest.mark.parametrize(("netmask", "gateway"), [("1.2.3.4 ;reboot", None), ("255.255.255.0", "1.2.3.4\t;reboot")])
def test_nothing_but_addresses_reaches_the_shell(
    scratch_card: Card, udp: UdpPeer, watch: Watch, netmask: str, gateway: str | None
) -> None:
    assert is_refused(udp, watch, interface("VemkEth1", "Static", "10.0.0.9", netmask, gateway))
    assert not any("reboot" in command for command in watch.commands())


ODD_ADDRESSES = ["10.1", "0x0a000009", "012.0.0.011", "167772169", "0XA.0.9"]


@pytest.mark.parametrize("address", ODD_ADDRESSES)
def test_odd_forms_of_an_address_are_valid(scratch_card: Card, udp: UdpPeer, watch: Watch, address: str) -> None:
    assert ask(udp, interface("VemkEth1", "Static", address, "255.255.255.0")).status == Status.SUCCESS
    watch.log()
    assert f"uci -q set network.lanvemt2eth1.ipaddr={address}" in watch.commands()


@pytest.mark.parametrize(
    ("content", "change"),
    [
        (interface("VemkEth10", "Dhcp"), "lanvemt2eth1.proto=dhcp"),
        (interface("VemkEth2x", "Dhcpx"), "lanvemt2eth2.proto=dhcp"),
        (interface("VemkEth1", "Disabledx"), "lanvemt2eth1.proto=none"),
        (DHCP.replace("Interface", "Interfaces"), "lanvemt2eth1.proto=dhcp"),
    ],
)
def test_names_and_modes_are_prefixes(
    scratch_card: Card, udp: UdpPeer, watch: Watch, content: str, change: str
) -> None:
    assert ask(udp, content).status == Status.SUCCESS
    assert watch.commands()[0] == f"uci -q set network.{change}"


@pytest.mark.parametrize("before", [" ", "\n\t", "<!-- x -->", "<Other/>"])
def test_anything_before_the_first_interface_is_skipped(
    scratch_card: Card, udp: UdpPeer, watch: Watch, before: str
) -> None:
    assert ask(udp, before + DHCP).status == Status.SUCCESS
    assert watch.log()[2].startswith("warning Wrong node name: ")
