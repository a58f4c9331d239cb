# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Puts the programs of the platform where the daemon looks for them.

Each of them is the gate, which records the call and then becomes the program of the same name in /run/programs.
"""

import os
import re
import subprocess
from pathlib import Path

import filesystem
import kernel

PATH = "/run/bin:/usr/sbin:/usr/bin:/sbin:/bin"
# The supervisor has it loaded into all that it starts, so that a line is in the log when it is printed.
LINE_BUFFERING = "/lib/libsetlbf.so"

_STANDINS = Path(__file__).resolve().parent / "standins"
_REAL = Path("/run/programs")
# Found through the search path, and at fixed places.
_ON_PATH = ("uci", "tar", "reboot", "logread", "usign")
_FIXED = ("/etc/init.d/network", "/etc/init.d/ntpd", "/etc/init.d/ntpdate", "/lib/upgrade/fwupgrade")


def _real_program(name: str, programs: dict[str, str]) -> str:
    standin = _STANDINS / name
    return str(standin) if standin.exists() else programs[name]


def take_over_shell(gate: str) -> None:
    """The shell cannot be found through the path: system() asks for /bin/sh. The real one is in /run/programs."""
    kernel.bind(gate, os.path.realpath("/bin/sh"))


def protect(programs: dict[str, str]) -> None:
    """Who writes over /etc/init.d/network on the card follows a link, and must not write into the build."""
    for path in programs.values():
        kernel.bind_read_only(path)


def install(programs: dict[str, str]) -> None:
    """`programs` says where those are that are no script of ours: gate, uci, tar and the library libsetlbf.so.

    What is missing or was replaced since the last time is put right.
    """
    for path in [*(f"/run/bin/{name}" for name in _ON_PATH), *_FIXED]:
        name = os.path.basename(path)
        _link(_real_program(name, programs), _REAL / name)
        _link(programs["gate"], Path(path))
    _link(programs["libsetlbf.so"], Path(LINE_BUFFERING))


def run_init_script(name: str, action: str) -> None:
    """For the card's own purposes: it is not recorded, and what it says is nobody's concern."""
    subprocess.run([str(_REAL / name), action], env={"PATH": PATH}, capture_output=True, check=False)


def run_start_links() -> None:
    """What is enabled starts one after the other, as at boot, and nobody waits for it. It is not recorded, either."""
    names = [re.sub(r"^S\d+", "", link.name) for link in sorted(Path("/etc/rc.d").glob("S*"))]
    scripts = [str(_REAL / name) for name in names if (_REAL / name).exists()]
    if scripts:
        nowhere = [(os.POSIX_SPAWN_OPEN, number, "/dev/null", os.O_RDWR, 0) for number in range(3)]
        command = ["bash", "-c", 'for script; do "$script" start; done', "boot", *scripts]
        os.posix_spawnp("bash", command, {"PATH": PATH}, file_actions=nowhere, setsid=True)


def _link(target: str, link: Path) -> None:
    if link.is_symlink() and os.readlink(link) == target:
        return
    link.parent.mkdir(parents=True, exist_ok=True)
    filesystem.remove(link)
    link.symlink_to(target)
