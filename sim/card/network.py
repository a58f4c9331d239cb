# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Puts the committed network configuration on the card's devices, as the platform's network script does."""

import ipaddress
import shlex
import socket
import subprocess
import sys

from settings import LEASE, Settings

# A changes directory that does not exist: only what was committed counts.
_SHOW = ["/run/programs/uci", "-t", "/run/nothing-staged", "show", "network"]


def _interfaces() -> dict[str, dict[str, str]]:
    """The options of each section of the configuration."""
    sections: dict[str, dict[str, str]] = {}
    listing = subprocess.run(_SHOW, capture_output=True, text=True, check=True).stdout
    for line in listing.splitlines():
        key, _, value = line.partition("=")
        _, section, *option = key.split(".")
        options = sections.setdefault(section, {})
        if option:
            options[option[0]] = " ".join(shlex.split(value))
    return sections


def _canonical(address: str) -> str:
    """Short, octal and hexadecimal forms are as good as the usual one."""
    return socket.inet_ntoa(socket.inet_aton(address))


def _interface(device: str, options: dict[str, str], settings: Settings) -> str | None:
    """The address with its prefix length, or None if the device shall have none."""
    proto = options.get("proto", "none")
    if proto == "dhcp":
        return settings.addresses[device][LEASE] + "/24"
    if proto != "static" or "ipaddr" not in options:
        return None
    netmask = _canonical(options.get("netmask", "255.255.255.0"))
    return ipaddress.ip_interface(f"{_canonical(options['ipaddr'])}/{netmask}").with_prefixlen


def _commands(device: str, options: dict[str, str], settings: Settings) -> list[str]:
    commands = [f"address flush dev {device}", f"link set {device} up"]
    address = _interface(device, options, settings)
    if address is not None:
        commands.append(f"address add {address} broadcast + dev {device}")
    if address is not None and "gateway" in options:
        metric = 1 + list(settings.addresses).index(device)
        commands.append(f"route replace default via {_canonical(options['gateway'])} dev {device} metric {metric}")
    return commands


def _ip(commands: list[str]) -> bool:
    batch = "\n".join(commands) + "\n"
    return subprocess.run(["ip", "-force", "-batch", "-"], input=batch, text=True, check=False).returncode == 0


def bring_up(settings: Settings) -> bool:
    """True if every device has got what its configuration says; complaints go to standard error."""
    present = {name for _, name in socket.if_nameindex()}
    commands = ["link set lo up"]
    is_complete = True
    for section, options in _interfaces().items():
        device = options.get("device") or options.get("ifname", "")
        if device not in present or device not in settings.addresses:
            continue
        try:
            commands += _commands(device, options, settings)
        except (OSError, ValueError) as error:
            print(f"network: {section}: {error}", file=sys.stderr)
            is_complete = False
    return _ip(commands) and is_complete


def bring_down(settings: Settings) -> None:
    present = {name for _, name in socket.if_nameindex()}
    _ip([f"address flush dev {device}" for device in settings.addresses if device in present])
