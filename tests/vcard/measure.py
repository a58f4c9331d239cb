# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Prints what the daemon costs on the card: memory, and the time from the start of the kernel to the first answer."""

import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "system"))

from asking import ask, connect, udp_peer  # noqa: E402
from card import VirtualCard  # noqa: E402
from support.documents import ip_configuration  # noqa: E402
from wire import Command, request  # noqa: E402

REQUESTS = 1000


def resident(card: VirtualCard) -> str:
    return card.run("sed -n 's/^VmRSS:[[:space:]]*//p' /proc/$(pidof tarveld)/status")


def answer_many() -> None:
    """Half of the requests on one connection, half of them datagrams."""
    with connect() as peer:
        for _ in range(REQUESTS // 2):
            peer.ask(request(Command.VERSIONS))
    with udp_peer("eth0") as datagrams:
        for _ in range(REQUESTS // 2):
            datagrams.ask(request(Command.IP_GET, ip_configuration()))


def main() -> None:
    with tempfile.TemporaryDirectory() as directory:
        begin = time.monotonic()
        card = VirtualCard(Path(directory), wait=False)
        ask(Command.VERSIONS)
        answered = time.monotonic() - begin
        try:
            card.wait_for_boot()
            print(f"kernel's start to first answer  {answered:.1f} s, emulator included")
            print(f"resident, idle                  {resident(card)}")
            answer_many()
            print(f"resident, {REQUESTS} requests later {resident(card)}")
        finally:
            card.close()


if __name__ == "__main__":
    main()
