# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The first process of a simulated card; runs in the card's own namespaces.

Its settings come on standard input once the devices are in place. It says "up" on standard output when it has booted.
"""

import os
import socket
import sys

import delays
import filesystem
import kernel
import programs
from card import Card
from settings import DIRECTORY, Settings


def main() -> None:
    kernel.refuse_dangerous_capabilities()
    settings = Settings.parse(sys.stdin.read())
    os.umask(0o022)
    socket.sethostname(settings.name)
    filesystem.prepare(settings.directory, settings.binds)
    os.chdir("/")
    os.environ["PATH"] = programs.PATH
    programs.protect(settings.programs)
    programs.take_over_shell(settings.programs["gate"])
    for name in ("fail", "hold"):
        os.makedirs(DIRECTORY / "control" / name, exist_ok=True)
    settings.save()
    delays.publish(settings)
    card = Card(settings)
    card.first_boot()
    print("up", flush=True)
    card.run()


main()
