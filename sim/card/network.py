# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card's network devices: what the configuration says about them, and the commands that put it on them."""

import shlex
import socket
import subprocess

from interfaces import Interface
from settings import Settings

# Settings that are staged and not yet committed count as well: the platform reads both.
_SHOW = ["/run/programs/uci", "-q", "show", "network"]


def configured(settings: Settings) -> list[Interface]:
    """The interfaces on devices that the card has, in the order of the configuration; none if it cannot be read."""
    present = present_devices(settings)
    interfaces = [Interface.of(section, options) for section, options in _sections().items()]
    return [interface for interface in interfaces if interface.device in present]


def _sections() -> dict[str, dict[str, str]]:
    """The options of each section; the items of a list with a blank between."""
    sections: dict[str, dict[str, str]] = {}
    for line in subprocess.run(_SHOW, capture_output=True, text=True, check=False).stdout.splitlines():
        key, _, value = line.partition("=")
        _, section, *option = key.split(".")
        options = sections.setdefault(section, {})
        if option:
            options[option[0]] = " ".join(shlex.split(value))
    return sections


def present_devices(settings: Settings) -> list[str]:
    present = {name for _, name in socket.if_nameindex()}
    return [device for device in settings.addresses if device in present]


def bring_up(interface: Interface, settings: Settings) -> list[str]:
    """Commands for a device that is down and has no address. A later default route replaces an earlier one."""
    commands = [f"link set {interface.device} up"]
    known = settings.addresses[interface.device]
    if "router_mac" in known:
        router = f"{known['router']} lladdr {known['router_mac']} dev {interface.device}"
        commands.append(f"neighbour replace {router} nud stale extern_learn")
    commands += [f"address add {address} broadcast + dev {interface.device}" for address in interface.addresses]
    if interface.gateway is not None:
        commands.append(f"route replace default via {interface.gateway} dev {interface.device}")
    return commands


def take_down(settings: Settings) -> None:
    devices = present_devices(settings)
    run_ip([command for device in devices for command in (f"address flush dev {device}", f"link set {device} down")])


def run_ip(commands: list[str]) -> None:
    """All of them, also after one that fails: the platform says nothing about a route that cannot be."""
    batch = "\n".join(commands) + "\n"
    command = ["ip", "-force", "-batch", "-"]
    # What the caller marks as inheritable goes along: netifd's lock.
    subprocess.run(command, input=batch, text=True, capture_output=True, check=False, close_fds=False)
