# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The versions report: its sources, their order, and what happens without them."""

import re

from support.daemon import words
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, Status, request

FIXED = ["DravHardware", "VemkHardware", "BootLoader", "BaseSystem"]
LINE = re.compile(r'\t<Component Id="(.*)" Version="(.*)"/>')


def report(tcp: TcpPeer) -> str:
    reply = tcp.ask(request(Command.VERSIONS))
    assert reply.header.status == Status.SUCCESS
    return reply.text


def components(tcp: TcpPeer) -> list[tuple[str, str]]:
    lines = report(tcp).split("\n")
    assert (lines[0], lines[-1]) == ("<Versions>", "</Versions>")
    found = [LINE.fullmatch(line) for line in lines[1:-1]]
    return [(match[1], match[2]) for match in found if match]


def version(tcp: TcpPeer, name: str) -> str | None:
    return dict(components(tcp)).get(name)


def remove_all_sources(card: Card) -> None:
    for path in ("/tmp/drav_pnr_assy", "/tmp/vemk_pnr_assy", "/dev/mtd0ro"):
        card.inside.remove(path)
    for name in card.inside.listdir("/etc/pnr"):
        card.inside.remove(f"/etc/pnr/{name}")


def test_fixed_components_come_first_and_installed_ones_in_byte_order(scratch_card: Card, tcp: TcpPeer) -> None:
    for name in ("zeta", "Alpha", "beta", "10", "squashfs.bak"):
        scratch_card.inside.write(f"/etc/pnr/{name}", f"{name}-1\n")
    installed = [name for name, _ in components(tcp)]
    assert installed[:4] == FIXED
    assert installed[4:] == ["10", "Alpha", "application", "beta", "kernel", "squashfs.bak", "zeta"]


def test_card_without_any_source_reports_an_empty_list(scratch_card: Card, tcp: TcpPeer) -> None:
    remove_all_sources(scratch_card)
    reply = tcp.ask(request(Command.VERSIONS))
    assert reply.text == "<Versions>\n</Versions>"
    assert (reply.header.status, reply.header.payload_length, reply.payload[0]) == (Status.SUCCESS, 27, 23)


def test_missing_sources_are_told_on_standard_error_and_not_logged(
    scratch_card: Card, watch: Watch, tcp: TcpPeer
) -> None:
    remove_all_sources(scratch_card)
    report(tcp)
    assert watch.console().splitlines() == [
        "fopen() failed: No such file or directory",
        "fopen() failed: No such file or directory",
        "fopen() FAILED: No such file or directory",
    ]
    assert len(watch.log()) == 1  # the connection


def test_base_system_is_not_repeated_under_its_file_name(card: Card, tcp: TcpPeer) -> None:
    names = [name for name, _ in components(tcp)]
    assert names.count("BaseSystem") == 1
    assert "squashfs" not in names


def test_directory_among_the_part_numbers_is_left_out(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["mkdir", "/etc/pnr/folder"])
    assert [name for name, _ in components(tcp)] == [*FIXED, "application", "kernel"]


def test_part_number_directory_may_be_missing(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.run(["rm", "-r", "/etc/pnr"])
    assert [name for name, _ in components(tcp)] == FIXED[:3]


def test_empty_file_is_left_out_without_an_old_error(scratch_card: Card, watch: Watch, tcp: TcpPeer) -> None:
    scratch_card.inside.write("/etc/pnr/kernel", "")
    assert version(tcp, "kernel") is None
    assert watch.console() == f"fgets() failed or file is empty: {words('Success')}\n"


def test_version_is_copied_unescaped(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.write("/etc/pnr/kernel", 'a"b<c>&\r\nsecond line\n')
    assert '\t<Component Id="kernel" Version="a"b<c>&\r"/>\n' in report(tcp)


def test_version_without_a_line_end_is_taken_whole(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.write("/etc/pnr/kernel", "abc")
    assert version(tcp, "kernel") == "abc"


def test_long_first_line_is_cut_at_1023_bytes(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.write("/etc/pnr/kernel", "k" * 1500 + "\n")
    assert version(tcp, "kernel") == "k" * 1023


def test_version_read_earlier_does_not_stand_for_a_missing_one(scratch_card: Card, tcp: TcpPeer) -> None:
    scratch_card.inside.remove("/tmp/vemk_pnr_assy")
    assert components(tcp)[:2] == [("DravHardware", "DRAV-2001-03"), ("BootLoader", "BOOT-3.2.1")]


def test_changed_part_number_is_read_anew(scratch_card: Card, tcp: TcpPeer) -> None:
    assert version(tcp, "kernel") == "KERN-6.1.0"
    scratch_card.inside.write("/etc/pnr/kernel", "KERN-8.0\n")
    assert version(tcp, "kernel") == "KERN-8.0"
