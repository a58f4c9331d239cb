# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card has booted, and what runs on it is what the target build made."""

import pytest
from asking import ask
from card import ADDRESSES, VirtualCard
from wire import Command, Status


def test_the_processor_is_a_32_bit_big_endian_power_pc(card: VirtualCard) -> None:
    assert card.run("uname -m") == "ppc"


def test_the_daemon_logs_its_whole_start_in_order(card: VirtualCard) -> None:
    expected = [
        "Starting...",
        "SVN revision: 1795:4041",
        "/tmp/upgrade successfully created",
        "Working directory successfully changed to /tmp/upgrade",
        "Listen on port 50003 was successful",
        "BindToDevice (eth0) was successful",
        "BindToDevice (eth1) was successful",
        "recv() failed: Socket not connected",
    ]
    card.wait_for_log(expected[-1])
    log = card.log()
    places = [log.find(line) for line in expected]
    assert -1 not in places and places == sorted(places)


def test_progress_is_logged_as_information_and_failure_as_warning(card: VirtualCard) -> None:
    card.wait_for_log("recv() failed")
    levels = {line.split("]: ")[1]: line.split()[4] for line in card.log().splitlines() if " tarveld[" in line}
    assert levels["Starting..."] == "daemon.info"
    assert levels["recv() failed: Socket not connected"] == "daemon.warn"


def test_what_the_daemon_prints_reaches_the_log_as_information(card: VirtualCard) -> None:
    ask(Command.UPLOAD)
    card.wait_for_log("daemon.info tarveld: Start pattern    (32bit): 0xff9ac381")


def test_what_the_daemon_complains_about_reaches_the_log_as_an_error(card: VirtualCard) -> None:
    card.run("mv /tmp/drav_pnr_assy /tmp/kept")
    ask(Command.VERSIONS)
    card.run("mv /tmp/kept /tmp/drav_pnr_assy")
    card.wait_for_log("daemon.err tarveld: ")


@pytest.mark.parametrize("device", ADDRESSES)
def test_the_versions_come_from_the_files_and_the_boot_flash(card: VirtualCard, device: str) -> None:
    answer = ask(Command.VERSIONS, address=ADDRESSES[device])
    assert answer.header.status == Status.SUCCESS
    assert answer.text == (
        "<Versions>\n"
        '\t<Component Id="DravHardware" Version="DRAV-2001-03"/>\n'
        '\t<Component Id="VemkHardware" Version="VEMK-1004-07"/>\n'
        '\t<Component Id="BootLoader" Version="BOOT-3.2.1"/>\n'
        '\t<Component Id="BaseSystem" Version="BASE-1.4.0"/>\n'
        '\t<Component Id="application" Version="APPL-2.5.1"/>\n'
        '\t<Component Id="kernel" Version="KERN-6.1.0"/>\n'
        "</Versions>"
    )
