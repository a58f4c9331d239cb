# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs a daemon under callgrind on a simulated card."""

import signal

from callgrind import Profile, parse
from series import ask_everything
from support.peers import TcpPeer, UdpPeer
from tarvelsim import Card, Lan

_CARD = "card1"
_OUTPUT = "/run/card/callgrind"
_INSTALLED = {f"/etc/pnr/part{number:02}": f"PART-{number:02}.1.0\n" for number in range(20)}
_PATIENCE = 60  # valgrind takes its time


def counted(lan: Lan, daemon: str) -> Profile:
    """What it costs this daemon to answer everything once through."""
    command = ["valgrind", "--tool=callgrind", "--quiet", "--vgdb=no", "--dump-line=no"]
    command += [f"--callgrind-out-file={_OUTPUT}", daemon]
    card = lan.card(_CARD, command=command, supervised=False, files=_INSTALLED)
    try:
        card.start(timeout=_PATIENCE)
        _ask(lan, card)
        # As it is ended, it writes down what it has counted.
        card.daemon.kill(signal.SIGTERM)
        card.daemon.wait_exit(timeout=_PATIENCE)
        return parse(card.inside.read(_OUTPUT).splitlines())
    finally:
        card.stop()


def _ask(lan: Lan, card: Card) -> None:
    address = card.address("eth0")
    assert address is not None
    udp = UdpPeer("lan0", lan.address("lan0"), address)
    try:
        with TcpPeer(address) as tcp:
            ask_everything(card, tcp, udp)
    finally:
        udp.close()
