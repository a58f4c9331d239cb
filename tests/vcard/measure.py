# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Prints what the daemon costs on the card: its memory, the time from the start of the kernel to the first answer, and
its jobs beside the two floors of bench/floors, which serve on the same card."""

import sys
import tempfile
import time
from collections.abc import Iterator
from functools import partial
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
for lender in ("tests/system", "bench/measure", "sim"):
    sys.path.append(str(ROOT / lender))

import load  # noqa: E402
from asking import ask, connect, udp_peer  # noqa: E402
from card import ADDRESSES, VirtualCard  # noqa: E402
from rows import Row, compare, table  # noqa: E402
from support.documents import ip_configuration  # noqa: E402
from wire import Command, Header, request  # noqa: E402

REQUESTS = 1000
UPLOAD = 4 << 20
SERVERS = {"daemon": ("tarveld", 50003), "same": ("bench_same 50004", 50004), "bare": ("bench_bare tcp 50005", 50005)}


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


def is_listening(card: VirtualCard, port: int) -> bool:
    return f":{port:04X} 00000000:0000 0A" in card.run("cat /proc/net/tcp")


def start_floors(card: VirtualCard) -> None:
    for command, port in SERVERS.values():
        if command != "tarveld":
            card.run(f"({command} </dev/null >/dev/null 2>&1 &)")
        card.wait_for(partial(is_listening, card, port), f"{command} listens")


def beside_floors() -> Iterator[Row]:
    addresses = [f"{ADDRESSES['eth0']}:{port}" for _, port in SERVERS.values()]
    head = Header(command=Command.UPLOAD, message_format=1, payload_length=UPLOAD + 4).encode()
    jobs = {
        "on the card: versions": ("kept", request(Command.VERSIONS), 100, 5, 0),
        f"on the card: upload of {UPLOAD >> 20} MiB": ("upload", head + UPLOAD.to_bytes(4, "little"), 10, 1, UPLOAD),
    }
    for job, (kind, message, rounds, turn, size) in jobs.items():
        samples = load.ask(kind, message, addresses, rounds=rounds, turn=turn, size=size)
        yield from compare(job, dict(zip(SERVERS, samples, strict=True)))


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
            start_floors(card)
            print("\n".join(table(beside_floors())))
        finally:
            card.close()


if __name__ == "__main__":
    main()
