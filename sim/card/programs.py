# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Puts the programs of the platform where the daemon looks for them.

Each of them is the gate, which records the call and then becomes the program of the same name in /run/programs.
"""

import os
from pathlib import Path

import kernel

PATH = "/run/bin:/usr/sbin:/usr/bin:/sbin:/bin"

_STANDINS = Path(__file__).resolve().parent / "standins"
_REAL = Path("/run/programs")
# Found through the search path, and at fixed places.
_ON_PATH = ("uci", "tar", "reboot")
_FIXED = ("/etc/init.d/network", "/etc/init.d/ntpd", "/etc/init.d/ntpdate", "/lib/upgrade/fwupgrade")


def _real_program(name: str, programs: dict[str, str]) -> str:
    standin = _STANDINS / name
    return str(standin) if standin.exists() else programs[name]


def install(programs: dict[str, str]) -> None:
    """`programs` says where the programs that are no script of ours are: gate, uci and tar."""
    os.makedirs("/run/bin", exist_ok=True)
    os.makedirs("/lib/upgrade", exist_ok=True)
    for path in [*(f"/run/bin/{name}" for name in _ON_PATH), *_FIXED]:
        name = os.path.basename(path)
        os.symlink(_real_program(name, programs), _REAL / name)
        os.symlink(programs["gate"], path)
    # The shell cannot be found through the path: system() asks for /bin/sh. The real one is already in place.
    kernel.bind(programs["gate"], os.path.realpath("/bin/sh"))
