# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the cards' cables lead to.

On a small LAN the client's own device is a bridge. On large ones the bridges are apart, in a network namespace of their
own: no client has a thousand cables, and whatever asks the kernel for the machine's devices would be told of them all.
"""

import subprocess
from collections.abc import Sequence
from pathlib import Path

from .errors import SimError
from .plan import Place, Plan, Segment

_NAMESPACE = "switches"
_BRIDGE = "type bridge stp_state 0 forward_delay 0 mcast_snooping 0"


def build(plan: Plan, run_dir: Path) -> None:
    """Done by the first process of the LAN."""
    if plan.is_large:
        (run_dir / _NAMESPACE).touch()
        # No addresses of version 6, and nothing that goes with them.
        quiet = "echo 1 >/proc/sys/net/ipv6/conf/default/disable_ipv6; exec ip -batch -"
        apart = ["unshare", f"--net={run_dir / _NAMESPACE}", "--", "sh", "-c", quiet]
        _run(apart, [command for segment in plan.all_segments() for command in _bridge_apart(segment)])
    commands = ["link set lo up"]
    for segment in plan.all_segments():
        commands += [] if plan.is_large else _bridge_here(segment)
        commands.append(f"link set {segment.client_device} up")
        address = f"{segment.client_address}/{segment.prefix}"
        commands.append(f"address add {address} broadcast + dev {segment.client_device}")
    commands.append(f"route add 255.255.255.255/32 dev {plan.segments()[0].client_device}")
    _run(["ip", "-batch", "-"], commands)


def run_ip(plan: Plan, run_dir: Path, commands: Sequence[str]) -> None:
    """Commands about the LAN's ends of cables."""
    _run([*enter(plan, run_dir), "ip", "-batch", "-"], commands)


def enter(plan: Plan, run_dir: Path) -> list[str]:
    """What stands before a command that is for where the LAN's ends of cables are."""
    return ["nsenter", f"--net={run_dir / _NAMESPACE}", "--"] if plan.is_large else []


def introduce(places: Sequence[Place], plan: Plan) -> None:
    """Lets the client know these cards at the addresses they have from the factory. What is known is not asked for, and
    takes no room in the kernel's table of who was asked: one for all namespaces together, of a thousand entries.
    """
    commands = []
    for place in places:
        for segment in plan.segments(place.lan):
            known = f"{segment.static_address(place.number)} lladdr {segment.card_mac(place.number)}"
            commands.append(f"neighbour replace {known} dev {segment.client_device} nud stale extern_learn")
    _run(["ip", "-batch", "-"], commands)


def remove_port(plan: Plan, run_dir: Path, port: str) -> None:
    """No error if there is none: the kernel removes a vanished card's cable in its own time."""
    try:
        run_ip(plan, run_dir, [f"link delete {port}"])
    except SimError:
        pass


def bridge_of(segment: Segment) -> str:
    return f"switch{segment.client_device}" if segment.is_large else segment.client_device


def _bridge_here(segment: Segment) -> list[str]:
    """A bridge that is the client's device as well.

    Its anchor is a cable to nowhere: a bridge whose last card has left loses its carrier, and when the next card is
    plugged in the kernel may take a second to notice.
    """
    name = segment.client_device
    anchor = f"{name}anchor"
    return [
        f"link add name {name} address {segment.client_mac} {_BRIDGE}",
        f"link add name {anchor} type veth peer name {anchor}end",
        f"link set {anchor} master {name} up",
        f"link set {anchor}end arp off up",
    ]


def _bridge_apart(segment: Segment) -> list[str]:
    """The client's cable is its anchor."""
    bridge, port = bridge_of(segment), f"client{segment.client_device}"
    first_process = 1
    client = f"name {segment.client_device} address {segment.client_mac} netns {first_process}"
    return [
        f"link add name {bridge} {_BRIDGE}",
        f"link add name {port} type veth peer {client}",
        f"link set {port} master {bridge} up",
        f"link set {bridge} up",
    ]


def _run(program: Sequence[str], commands: Sequence[str]) -> None:
    done = subprocess.run(program, input="\n".join(commands) + "\n", text=True, capture_output=True, check=False)
    if done.returncode != 0:
        raise SimError(f"ip: {list(commands)}: {done.stderr.strip()}")
