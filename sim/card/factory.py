# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The files that a new card comes with, and those that its start scripts make at each boot."""

import base64
import ipaddress
from pathlib import Path

import filesystem
from settings import Settings

_PART_NUMBERS = {"squashfs": "BASE-1.4.0", "kernel": "KERN-6.1.0", "application": "APPL-2.5.1"}
_BOOT_FILES = {"/tmp/drav_pnr_assy": "DRAV-2001-03\n", "/tmp/vemk_pnr_assy": "VEMK-1004-07\n"}
_FLASH = Path("/dev/mtd0ro")
_FLASH_SIZE = 1024
_INTERFACES = {"eth0": "lanvemt2eth1", "eth1": "lanvemt2eth2"}


def _system_config(hostname: str | None, server: str) -> str:
    option = f"\toption hostname '{hostname}'\n" if hostname is not None else ""
    return (
        f"\nconfig system\n{option}\toption timezone 'UTC'\n"
        f"\nconfig timeserver 'ntp'\n\toption server '{server}'\n\n"
    )


def _network_config(settings: Settings) -> str:
    text = "\nconfig interface 'loopback'\n\toption ifname 'lo'\n\toption proto 'static'\n"
    text += "\toption ipaddr '127.0.0.1'\n\toption netmask '255.0.0.0'\n"
    for device, section in _INTERFACES.items():
        text += f"\nconfig interface '{section}'\n\toption ifname '{device}'\n\toption proto 'static'\n"
        addresses = settings.addresses[device]
        netmask = ipaddress.ip_network(f"0.0.0.0/{addresses['prefix']}").netmask
        text += f"\toption ipaddr '{addresses['static']}'\n\toption netmask '{netmask}'\n"
    return text + "\n"


def _bootloader_flash() -> bytes:
    record = b"\x27\x05\x19\x56boot\0PNR=BOOT-3.2.1\0"
    return record.ljust(_FLASH_SIZE, b"\xff")


def _write(path: str, content: bytes | None) -> None:
    filesystem.remove(Path(path))
    if content is None:
        return
    Path(path).parent.mkdir(parents=True, exist_ok=True)
    Path(path).write_bytes(content)


def restore(settings: Settings) -> None:
    """Puts everything that outlives a reboot back to what it is on a new card."""
    for directory in ("/etc/config", "/etc/pnr", "/etc/rc.d"):
        filesystem.clear(directory)
    Path("/etc/config/system").write_text(_system_config(settings.hostname, settings.addresses["eth0"]["router"]))
    Path("/etc/config/network").write_text(_network_config(settings))
    for name, number in _PART_NUMBERS.items():
        Path("/etc/pnr", name).write_text(number + "\n")
    filesystem.remove(_FLASH)
    _FLASH.write_bytes(_bootloader_flash())


def make_boot_files() -> None:
    for path, content in _BOOT_FILES.items():
        Path(path).write_text(content)


def write_extra_files(settings: Settings) -> None:
    """The files that the maker of this card wants to be different."""
    for path, content in settings.files.items():
        _write(path, None if content is None else base64.b64decode(content))
