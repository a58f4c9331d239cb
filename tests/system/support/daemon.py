# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon under test: how it is run, and what its C library calls an error.

TARVELD is its command line, with an emulator in front if it needs one.
"""

import os
import shlex
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]

_WORDS = shlex.split(os.environ.get("TARVELD") or str(ROOT / "build/tarveld"))
COMMAND = [str(Path(word).resolve()) if Path(word).exists() else word for word in _WORDS]
IS_EMULATED = len(COMMAND) > 1

_PROGRAM = Path(COMMAND[-1])
_CONTENT = _PROGRAM.read_bytes() if _PROGRAM.exists() else b""

# One of the texts that only the hardened build can log.
IS_HARDENED = b"is neither an address nor a host name, refused" in _CONTENT

# Instead of this machine's, which is GNU's.
HAS_BUSYBOX_TAR = "TARVEL_SIM_TAR" in os.environ

_BEFORE_EACH_COMMAND = "set -f; " if IS_HARDENED else ""


def bare(command: str) -> str:
    """What the daemon gave to the shell, without what the hardened build puts before each command."""
    assert command.startswith(_BEFORE_EACH_COMMAND), command
    return command.removeprefix(_BEFORE_EACH_COMMAND)


# Where musl has other words than glibc.
_IN_MUSL = {
    "Success": "No error information",
    "Address already in use": "Address in use",
    "Cannot allocate memory": "Out of memory",
    "Connection timed out": "Operation timed out",
    "Input/output error": "I/O error",
    "Network is unreachable": "Network unreachable",
    "No child processes": "No child process",
    "No route to host": "Host is unreachable",
    "Too many open files": "No file descriptors available",
    "Transport endpoint is not connected": "Socket not connected",
}


def _uses_musl() -> bool:
    """Linked to it, or with its texts inside."""
    return b"ld-musl" in _CONTENT or b"\0No error information\0" in _CONTENT


_USES_MUSL = _uses_musl()


def words(text: str) -> str:
    """An error's text, given in the words of glibc, as the daemon under test says it."""
    return _IN_MUSL[text] if _USES_MUSL else text
