# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The boot loader's part number, which lies somewhere in a flash block."""

import pytest
from support.peers import TcpPeer
from support.watch import Watch
from tarvelsim import Card
from wire import Command, request

SIZE = 1024


def line_of(number: str) -> str:
    return f'\t<Component Id="BootLoader" Version="{number}"/>\n'


def report(card: Card, tcp: TcpPeer, flash: bytes) -> str:
    card.inside.write("/dev/mtd0ro", flash)
    return tcp.ask(request(Command.VERSIONS)).text


@pytest.mark.parametrize(
    ("flash", "number"),
    [
        (b"PNR=first\0".ljust(SIZE, b"\xff"), "first"),
        (b"PNR=first\0PNR=second\0".ljust(SIZE), "first"),
        (b"PNR=\0".ljust(SIZE), ""),
        (b"PNR=last\0".rjust(SIZE), "last"),
        (b"xPNR=PNR=twice\0".ljust(SIZE), "PNR=twice"),
        (b"PNR=longer flash\0".ljust(2 * SIZE), "longer flash"),
    ],
    ids=["at the start", "twice", "empty", "at the end", "in itself", "more flash"],
)
def test_number_lies_between_mark_and_nul(scratch_card: Card, tcp: TcpPeer, flash: bytes, number: str) -> None:
    assert line_of(number) in report(scratch_card, tcp, flash)


@pytest.mark.parametrize(
    ("flash", "complaint"),
    [
        (bytes(SIZE), "Bootloader PNR doesn't exist"),
        (b"PNR".ljust(SIZE), "Bootloader PNR doesn't exist"),
        (b"PNR=".rjust(SIZE), "Bootloader PNR string is not bounded"),
        (b"PNR=x".ljust(SIZE, b"x"), "Bootloader PNR string is not bounded"),
        (bytes(SIZE) + b"PNR=behind\0", "Bootloader PNR doesn't exist"),
        (b"PNR=short\0".ljust(SIZE - 1), "End of file unexpectedly reached"),
        (b"", "End of file unexpectedly reached"),
    ],
    ids=["none", "cut", "ends the block", "no NUL", "behind the block", "short flash", "no flash"],
)
def test_bad_flash_leaves_the_boot_loader_out(
    scratch_card: Card, watch: Watch, tcp: TcpPeer, flash: bytes, complaint: str
) -> None:
    assert "BootLoader" not in report(scratch_card, tcp, flash)
    assert watch.console() == f"{complaint}\n"


def test_flash_that_cannot_be_read_leaves_the_boot_loader_out(
    scratch_card: Card, watch: Watch, tcp: TcpPeer
) -> None:
    scratch_card.inside.remove("/dev/mtd0ro")
    scratch_card.inside.run(["mkdir", "/dev/mtd0ro"])
    assert "BootLoader" not in tcp.ask(request(Command.VERSIONS)).text
    assert watch.console() == "fread() failed: Is a directory\n"
