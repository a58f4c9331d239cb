# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The process that all cards of a LAN come from: each is a copy of it, and shares with the others what none writes to.

It is asked on its standard input, a socket: a message names the card's directory and carries a connection to whoever
wants the card. The answer is the number of the card's first process; life.py says what that sends on the connection.
"""

import contextlib
import gc
import os
import signal
import socket
import sys
import traceback
from typing import NoReturn

import kernel
import life

_LONGEST = 4096


def main() -> None:
    kernel.refuse_dangerous_capabilities()
    signal.signal(signal.SIGCHLD, signal.SIG_IGN)  # nobody wants to know how a card ended
    home = os.open("/proc/self/ns/pid", os.O_RDONLY | os.O_CLOEXEC)
    # What is never looked at again is never copied.
    gc.collect()
    gc.freeze()
    requests = socket.socket(fileno=sys.stdin.fileno())
    while True:
        directory, connections, _, _ = socket.recv_fds(requests, _LONGEST, 1)
        if not directory:
            break
        with socket.socket(fileno=connections[0]) as connection:
            connection.set_inheritable(False)  # the daemon of a new card starts while it is open
            answer = _make_card(directory.decode(), connection, home)
        requests.send(answer.encode())
    _outlive_the_cards()


def _make_card(directory: str, connection: socket.socket, home: int) -> str:
    """The card's first process is the first of its process namespace, too, which is nobody's who exists already."""
    try:
        kernel.unshare(kernel.CLONE_NEWPID)
        try:
            pid = os.fork()
            if pid == 0:
                os.close(home)
                _become_card(directory, connection)
        finally:
            kernel.setns(home, kernel.CLONE_NEWPID)
    except OSError as error:
        return str(error)
    return str(pid)


def _become_card(directory: str, connection: socket.socket) -> NoReturn:
    try:
        life.begin(directory)
        life.live(connection)
    except BaseException:
        traceback.print_exc()
    finally:
        os._exit(1)


def _outlive_the_cards() -> None:
    """They end with this process, and whoever asked for them may leave them to others."""
    with contextlib.suppress(ChildProcessError):
        while True:
            os.wait()


main()
