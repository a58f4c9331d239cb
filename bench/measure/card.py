# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A card to measure on: its servers wait neither for a log that is read slowly nor for a shell that keeps records."""

import subprocess
from collections.abc import Iterator, Sequence
from contextlib import contextmanager

import cores
import paths  # noqa: F401
from paths import program
from server import Server
from tarvelsim import Card, Lan, binaries, namespaces

NAME = "card1"
INSTALLED = 20  # components beside the four that every card has

_PORTS = {"daemon": 50003, "same": 50004, "bare": 50005, "bare udp": 50006, "bare daemon": 50003}


@contextmanager
def measured_card(lan: Lan, files: int = INSTALLED) -> Iterator[Card]:
    """A card that runs no daemon yet. Its two networks have all of their settings."""
    installed: dict[str, str | None] = {f"/etc/pnr/part{number:02}": f"PART-{number:02}.1.0\n" for number in range(files)}
    installed |= {"/etc/pnr/kernel": None, "/etc/pnr/application": None}
    with lan.card(NAME, autostart=False, files=installed, binds=[paths.BUILD]) as card:
        _free_of_records(card)
        _widen_log(card)
        for section, address in (("lanvemt2eth1", "10.0.0.254"), ("lanvemt2eth2", "10.0.1.254")):
            card.inside.uci("set", f"network.{section}.gateway={address}")
        card.inside.uci("commit", "network")
        yield card


def _free_of_records(card: Card) -> None:
    card.inside.run(["umount", card.inside.run(["readlink", "-f", "/bin/sh"]).stdout.strip()])
    programs = binaries.sim_programs()
    for name in ("uci", "tar"):
        card.inside.run(["ln", "-sf", programs[name], f"/run/bin/{name}"])


def _widen_log(card: Card) -> None:
    """So that the reader may be away for a moment: ten lines are all that wait otherwise."""
    card.inside.run(["sh", "-c", "echo 1000 > /proc/sys/net/unix/max_dgram_qlen"])


@contextmanager
def swallowed_log(card: Card) -> Iterator[None]:
    """The card's log goes to a program that does nothing but read it, on the core where nothing is measured."""
    entering = namespaces.enter_card_command(card.init_pid, [program("bench_sink")])
    with subprocess.Popen(cores.pinned(cores.OTHER, entering), stdout=subprocess.PIPE, text=True) as sink:
        assert sink.stdout is not None
        if sink.stdout.readline() != "ready\n":
            raise RuntimeError("bench_sink does not start")
        try:
            yield
        finally:
            sink.kill()


def port_of(name: str) -> int:
    return _PORTS[name]


def command_of(name: str) -> list[str]:
    port = str(port_of(name))
    commands = {
        "daemon": [program("tarveld")],
        "same": [program("bench_same"), port],
        "bare": [program("bench_bare"), "tcp", port],
        "bare udp": [program("bench_bare"), "udp", port],
        "bare daemon": [program("bench_bare"), "tcp", port],  # in the daemon's place
    }
    return commands[name]


@contextmanager
def servers(card: Card, names: Sequence[str]) -> Iterator[list[Server]]:
    """The daemon and its floors, side by side on one card."""
    started: list[Server] = []
    try:
        for name in names:
            kind = "udp" if name.endswith("udp") else "tcp"
            started.append(Server(card, name.split()[0], command_of(name), port_of(name), kind))
        yield started
    finally:
        for server in started:
            server.stop()
