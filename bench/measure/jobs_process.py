# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the process costs: its start, its idle time, its memory."""

import time
from collections.abc import Iterator

import cores
import load
import messages
from card import command_of, servers
from effort import Effort
from paths import program
from rows import Row, compare
from server import Server
from tarvelsim import Card, namespaces


def start_rows(card: Card, effort: Effort) -> Iterator[Row]:
    """Takes the card's log for itself; whoever wants it afterwards takes it again."""
    programs = [command_of(name)[0] for name in ("daemon", "same")]
    command = [program("bench_start"), str(effort.starts), *programs]
    entering = ["env", "PATH=/run/bin:/usr/sbin:/usr/bin:/sbin:/bin"]
    entering += namespaces.enter_card_command(card.init_pid, command)
    daemon, same = load.run(cores.pinned(cores.WORK, entering), len(programs))
    yield from compare("start to listening", {"daemon": daemon, "same": same})


def idle_rows(card: Card, effort: Effort) -> Iterator[Row]:
    with servers(card, ["daemon"]) as (daemon,):
        time.sleep(1)  # the question whether it serves is still to be closed
        before = daemon.wakeups()
        time.sleep(effort.idle_seconds)
        yield Row(f"idle, wake-ups in {effort.idle_seconds} s", value=daemon.wakeups() - before)


def memory_rows(card: Card, effort: Effort) -> Iterator[Row]:
    with servers(card, ["daemon"]) as (daemon,):
        at_start = daemon.private_memory()
        for _ in range(2):  # a kind that follows all others finds the heap in other pieces than at first
            _ask_everything(daemon, effort.mixed // 4)
        after_half = daemon.private_memory()
        _ask_everything(daemon, effort.mixed - effort.mixed // 2)
        after_all = daemon.private_memory()
    yield Row("private memory at start", value=at_start, unit="kB")
    yield Row("private memory", value=after_all, unit="kB")
    yield Row("private memory, growth", value=after_all - after_half, unit="kB")


def _ask_everything(daemon: Server, requests: int) -> None:
    """Of every hundred requests so many: the ones that start programs are the slow ones."""
    burst = 21
    shares = {
        ("kept", messages.UNKNOWN, 0): 30,
        ("kept", messages.VERSIONS, 0): 25,
        ("fresh", messages.VERSIONS, 0): 20,
        ("kept", messages.TIME_GET, 0): 1,
        ("datagram", messages.IP_GET, 0): 1,
        ("burst", messages.OTHER_DEVICE, burst - 1): 12,
        ("burst", messages.OTHER_NAME, burst - 1): 11,
    }
    for (kind, request, size), share in shares.items():
        rounds = requests * share // 100
        load.ask(kind, request, [daemon.address], rounds=rounds // burst + 1 if size else rounds, size=size)
