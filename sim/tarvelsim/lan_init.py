# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The first process of a LAN: builds the networks, runs the command, ends with it.

Started as a program of its own inside the LAN's namespaces. When it ends, the kernel ends everything else in them.
"""

import os
import signal
import sys
from pathlib import Path

if __package__ is None:
    sys.path.insert(0, str(Path(__file__).resolve().parents[1]))
from tarvelsim import switches  # noqa: E402
from tarvelsim.places import LAN_PROGRAM  # noqa: E402
from tarvelsim.plan import Plan  # noqa: E402

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
    switches.build(Plan.load(Path(run_dir)), Path(run_dir))
    try:
        return _run(command, run_dir)
    except OSError as error:
        print(f"{LAN_PROGRAM}: {command[0]}: {error.strerror}", file=sys.stderr)
        return 127


if __name__ == "__main__":
    sys.exit(main())
