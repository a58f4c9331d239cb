# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The first process of a LAN: builds the two networks, runs the command, ends with it.

Started as a program of its own inside the LAN's namespaces. When it ends, the kernel ends everything else in them.
"""

import os
import signal
import subprocess
import sys
from pathlib import Path

if __package__ is None:
    sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
from tarvelsim.places import LAN_PROGRAM  # noqa: E402
from tarvelsim.plan import SEGMENTS, Segment  # noqa: E402

# What the machine's own settings must not decide: no address of version 6, no check of the senders' route (the cards
# are reached over two networks), and a fresh address replaces an old neighbour at once.
_KERNEL_SETTINGS = {
    "ipv6/conf/all/disable_ipv6": "1",
    "ipv6/conf/default/disable_ipv6": "1",
    "ipv4/conf/all/rp_filter": "0",
    "ipv4/conf/default/rp_filter": "0",
    "ipv4/conf/all/arp_notify": "1",
    "ipv4/conf/default/arp_notify": "1",
    "ipv4/neigh/default/locktime": "0",
    "ipv4/ping_group_range": "0 0",
}
# Changed by us or by Python, which must not show in the command.
_NORMAL_FOR_COMMAND = (signal.SIGINT, signal.SIGPIPE, signal.SIGXFSZ)


def apply_kernel_settings() -> None:
    for name, value in _KERNEL_SETTINGS.items():
        path = Path("/proc/sys/net", name)
        if path.exists():
            path.write_text(value, encoding="ascii")


def _segment_commands(segment: Segment) -> list[str]:
    """A bridge that is the client's device as well.

    Its anchor is a cable to nowhere: a bridge whose last card has left loses its carrier, and when the next card is
    plugged in the kernel may take a second to notice.
    """
    name = segment.client_device
    anchor = f"{name}anchor"
    return [
        f"link add name {name} address {segment.client_mac} type bridge stp_state 0 forward_delay 0 mcast_snooping 0",
        f"link add name {anchor} type veth peer name {anchor}end",
        f"link set {anchor} master {name} up",
        f"link set {anchor}end arp off up",
        f"link set {name} up",
        f"address add {segment.client_address}/24 broadcast + dev {name}",
    ]


def _build_networks() -> None:
    commands = ["link set lo up"]
    for segment in SEGMENTS:
        commands += _segment_commands(segment)
    commands.append(f"route add 255.255.255.255/32 dev {SEGMENTS[0].client_device}")
    subprocess.run(["ip", "-batch", "-"], input="\n".join(commands) + "\n", text=True, check=True)


def _run(command: list[str], run_dir: str) -> int:
    """Waits for the command while reaping what others have left to the first process."""
    signal.signal(signal.SIGINT, signal.SIG_IGN)  # Ctrl-C is for the command
    pid = os.posix_spawnp(command[0], command, {**os.environ, "TARVEL_LAN": run_dir}, setsigdef=_NORMAL_FOR_COMMAND)
    while True:
        ended, wait_status = os.wait()
        if ended == pid:
            status = os.waitstatus_to_exitcode(wait_status)
            return status if status >= 0 else 128 - status


def main() -> int:
    run_dir, *command = sys.argv[1:]
    apply_kernel_settings()
    _build_networks()
    try:
        return _run(command, run_dir)
    except OSError as error:
        print(f"{LAN_PROGRAM}: {command[0]}: {error.strerror}", file=sys.stderr)
        return 127


if __name__ == "__main__":
    sys.exit(main())
