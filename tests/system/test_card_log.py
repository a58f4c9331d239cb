# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card's log is a ring of 64 KiB, and what the daemon and its children print goes there, too."""

from support.archives import archive
from support.documents import interface, ip_configuration
from support.peers import TcpPeer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Sections, Status, request

RING = 65536
MEMBERS = 3000


def upload(peer: TcpPeer, content: bytes) -> int:
    payload = Sections(data=content).encode()
    return peer.ask(request(Command.UPLOAD, message_format=1, payload_length=len(payload)) + payload).header.status


def logread(card: Card) -> str:
    done = card.inside.run(["logread"], text=False)
    text: str = done.stdout.decode("utf-8", "backslashreplace")
    return text


def test_ring_holds_what_is_logged(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    udp.ask(request(Command.IP_GET, ip_configuration()))
    watch.log()
    assert "Retrieving current IP configuration\n" in logread(scratch_card)


def test_what_children_print_is_in_the_log_in_its_place(scratch_card: Card, tcp: TcpPeer, watch: Watch) -> None:
    assert upload(tcp, archive({"pnr/": b"", "pnr/kernel": b"KERN-6.2.0\n"})) == Status.SUCCESS
    watch.log()
    assert "info tarveld: pnr/kernel\n" in logread(scratch_card)


def test_every_staged_setting_is_in_the_log_when_the_addresses_are_set(
    scratch_card: Card, udp: UdpPeer, watch: Watch
) -> None:
    scratch_card.inside.uci("set", "system.ntp.server=10.9.9.9")
    udp.ask(request(Command.IP_SET, ip_configuration(interface("VemkEth2", "Dhcp"))))
    watch.log()
    assert "system.ntp.server" in logread(scratch_card)


def test_long_listing_of_an_archive_pushes_older_lines_out(scratch_card: Card, tcp: TcpPeer, watch: Watch) -> None:
    assert "Starting..." in logread(scratch_card)
    members = {f"pnr/a-part-with-a-long-name-{number}": b"" for number in range(MEMBERS)}
    assert upload(tcp, archive({"pnr/": b"", **members})) == Status.SUCCESS
    watch.log()
    kept = logread(scratch_card)
    assert "Starting..." not in kept
    assert f"a-part-with-a-long-name-{MEMBERS - 1}\n" in kept
    assert RING - 1024 < len(kept.encode()) <= RING


def test_ring_is_empty_after_a_reboot(scratch_card: Card) -> None:
    scratch_card.inside.run(["logger", "before"])
    scratch_card.records.wait_log("before")
    assert "before" in logread(scratch_card)
    scratch_card.inside.run(["reboot"])
    scratch_card.wait_boot(2)
    assert "before" not in logread(scratch_card)
