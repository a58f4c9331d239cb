# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card's system log: reads /dev/log and writes one line a message, with the level's name in front."""

import os
import re
import socket
import threading
from pathlib import Path

from ring import Ring

_LEVELS = ("emerg", "alert", "crit", "err", "warning", "notice", "info", "debug")
# "<30>Jan  1 00:00:00 tarveld[12]: text"
_MESSAGE = re.compile(r"<(?P<priority>\d+)>(?:\w{3} [ \d]\d [\d:]{8} )?(?P<text>.*)", re.DOTALL)
_LARGEST = 65536
_PATH = "/dev/log"
_STOP = b""  # no program says nothing


class SystemLog:
    """A thread of its own, so that no work of the card's init ever makes a program wait for its log."""

    def __init__(self, path: Path, ring: Ring) -> None:
        self._ring = ring
        self._file = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_APPEND | os.O_CLOEXEC, 0o644)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(_PATH)
        os.chmod(_PATH, 0o666)
        self._is_running = threading.Event()
        self._is_stopped = threading.Event()
        threading.Thread(target=self._read, daemon=True).start()

    def start(self) -> None:
        self._is_running.set()

    def stop(self) -> None:
        """What programs have said until now is written; what they say from now on is lost."""
        self._is_stopped.clear()
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as sender:
            sender.sendto(_STOP, _PATH)
        self._is_stopped.wait()

    def note(self, text: str) -> None:
        """A line of the card itself."""
        self._write("notice", f"card: {text}")

    def _read(self) -> None:
        while True:
            message = self._socket.recv(_LARGEST)
            if message == _STOP:
                self._is_running.clear()
                self._is_stopped.set()
            elif self._is_running.is_set():
                self._take(message.decode("utf-8", "backslashreplace"))

    def _take(self, message: str) -> None:
        parts = _MESSAGE.fullmatch(message.rstrip("\n\0"))
        if parts is None:
            self._write("notice", f"unknown: {message}")
        else:
            self._write(_LEVELS[int(parts["priority"]) & 7], parts["text"])

    def _write(self, level: str, text: str) -> None:
        line = text.replace("\\", "\\\\").replace("\n", "\\n")
        record = f"{level} {line}\n".encode()
        os.write(self._file, record)
        self._ring.add(record)
