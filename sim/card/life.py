# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The life of a card's first process, from the copy that it is at first to its end."""

import os
import signal
import socket
from pathlib import Path

import delays
import filesystem
import kernel
import programs
from apart import run_apart
from card import Card
from settings import DIRECTORY, Settings


def begin(directory: str) -> None:
    """Leaves the process it comes from: its files, its session, and what it does on signals."""
    kernel.end_with_parent()
    os.setsid()
    signal.signal(signal.SIGCHLD, signal.SIG_DFL)
    nowhere = os.open("/dev/null", os.O_RDWR)
    complaints = os.open(os.path.join(directory, "init.log"), os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
    for descriptor, file in enumerate((nowhere, nowhere, complaints)):
        os.dup2(file, descriptor)
    os.close(nowhere)
    os.close(complaints)
    kernel.unshare(kernel.CLONE_NEWNET | kernel.CLONE_NEWNS | kernel.CLONE_NEWUTS | kernel.CLONE_NEWIPC)
    kernel.make_private("/")
    kernel.proc("/proc")


def live(connection: socket.socket) -> None:
    """Says "apart" once devices can be given to it, takes its settings, a line, and says "up" when it has booted."""
    connection.sendall(b"apart\n")
    with connection.makefile("r") as stream:
        text = stream.readline()
    if not text:
        raise SystemExit("card: nobody wants it any more")
    settings = Settings.parse(text)
    os.umask(0o022)
    os.chdir("/")
    os.environ["PATH"] = programs.PATH
    run_apart(_furnish, settings)
    card = Card(settings)
    card.first_boot()
    connection.sendall(b"up\n")
    connection.close()
    card.run()


def _furnish(settings: Settings) -> None:
    if any("router_mac" in addresses for addresses in settings.addresses.values()):
        _forgo_version_6()
    socket.sethostname(settings.name)
    filesystem.prepare(settings.directory, settings.binds)
    programs.protect(settings.programs)
    programs.take_over_shell(settings.programs["gate"])
    for name in ("fail", "hold"):
        os.makedirs(DIRECTORY / "control" / name, exist_ok=True)
    settings.save()
    delays.publish(settings)


def _forgo_version_6() -> None:
    """What that asks of its neighbours whenever a device comes up is too much of a LAN with many cards."""
    for which in ("all", "default"):
        path = Path("/proc/sys/net/ipv6/conf", which, "disable_ipv6")
        if path.exists():
            path.write_text("1")
