# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Records with dumpcap what clients and cards say to each other."""

import socket
import subprocess
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from pathlib import Path

from programs import ProgramError, program
from tarvelsim.waiting import wait_for

_PATIENCE = 120
_DISCARD = 9  # nobody listens there, and no dissector looks at it
_FILTER = f"port 50003 or udp dst port {_DISCARD}"
_END = b"the end of the recording"


@contextmanager
def recorded(path: Path, devices: Sequence[str]) -> Iterator[None]:
    """From the first packet of the body to the last one."""
    options = [option for device in devices for option in ("-i", device)]
    command = [program("dumpcap"), "-q", "-f", _FILTER, *options, "-w", str(path)]
    with subprocess.Popen(command, stderr=subprocess.PIPE, text=True) as recorder:
        try:
            _wait_until_it_records(recorder)
            yield
            for device in devices:
                _send_end(device)
            wait_for(lambda: _ends(path) == len(devices), _PATIENCE, lambda: f"{path} does not get to its end")
        finally:
            recorder.terminate()


def _wait_until_it_records(recorder: subprocess.Popen[str]) -> None:
    assert recorder.stderr is not None
    said = ""
    while "File: " not in said:
        line = recorder.stderr.readline()
        said += line
        if not line:
            raise ProgramError(f"dumpcap does not record: {said}")


def _send_end(device: str) -> None:
    """What is recorded is written down in batches: once this is there, so is all that was before."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
        sender.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
        sender.setsockopt(socket.SOL_SOCKET, socket.SO_BINDTODEVICE, device.encode())
        sender.sendto(_END, ("255.255.255.255", _DISCARD))


def _ends(path: Path) -> int:
    return path.read_bytes().count(_END)
