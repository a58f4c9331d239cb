# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Random states of a card."""

from random import Random

from model import Fault
from model.card import DRAV_FILE, FLASH_DEVICE, PART_NUMBERS, VEMK_FILE
from model.settings import Value

from .actions import Setup

# These never run: without a network, or after a reboot, there would be no card to ask.
ALWAYS = {"network": Fault(0), "reboot": Fault(0)}

_LINES = (
    b"DRAV-1\n",
    b"no newline",
    b"\n",
    b"",
    b"cr\r\n",
    b'quote " < &\n',
    b"x" * 1500,
    b"two\nlines\n",
    b"\xff\n",
    b"a\0b\n",
)
_FLASHES = (b"boot\0PNR=BOOT-1\0", b"PNR=\0", b"PNR=unbounded", b"nothing", b"PNR=A\0PNR=B\0", b"\xffPNR=")
_NAMES = ("kernel", "application", "squashfs", "squashfs.bak", "Zeta", "\u00e4", "a b", ".hidden")
_SERVERS: tuple[Value | None, ...] = ("10.0.0.1", ["0.pool", "1.pool", "2.pool"], "a b", "z" * 130, None)
_FAULTS: tuple[dict[str, Fault], ...] = (
    {},
    {},
    {},
    {"uci": Fault(1, "get network.lanvemt2eth2")},
    {"uci": Fault(1, "get system.ntp.server")},
    {"uci": Fault(1, "set ")},
    {"uci": Fault(1, "delete ")},
    {"uci": Fault(1, "commit")},
    {"uci": Fault(1, "revert")},
    {"uci": Fault(0, "get ")},
    {"uci": Fault(1)},
    {"network": Fault(3)},
    {"ntpd": Fault(1), "ntpdate": Fault(2)},
    {"tar": Fault(2)},
    {"fwupgrade": Fault(1)},
    {"fwupgrade": Fault(0)},
)


def setup(random: Random) -> Setup:
    files = _files(random) if random.random() < 0.3 else {}
    options = _options(random) if random.random() < 0.3 else None
    return Setup(files, options, {**ALWAYS, **random.choice(_FAULTS)})


def _files(random: Random) -> dict[str, bytes | None]:
    files: dict[str, bytes | None] = {}
    for path in (DRAV_FILE, VEMK_FILE, *(PART_NUMBERS + name for name in _NAMES)):
        files[path] = random.choice(_LINES) if random.random() < 0.6 else None
    flash = random.choice(_FLASHES)
    fill = random.choice((b"\xff", b"\0"))
    files[FLASH_DEVICE] = flash.ljust(random.choice((1024, 1024, 4096)), fill) if random.random() < 0.9 else flash
    return files


def _options(random: Random) -> dict[str, Value | None]:
    options: dict[str, Value | None] = {}
    for section in ("network.lanvemt2eth1", "network.lanvemt2eth2"):
        options[f"{section}.proto"] = random.choice(("static", "static", "dhcp", "none", "pppoe", None))
        for option in ("ipaddr", "netmask", "gateway"):
            options[f"{section}.{option}"] = random.choice(("10.0.0.11", "255.255.255.0", None))
    options["system.ntp.server"] = random.choice(_SERVERS)
    return options
