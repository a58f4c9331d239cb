# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Finds the programs that a card needs: the daemon and what this tree builds for the simulation."""

import os
import shlex
import shutil
from pathlib import Path

from .errors import SimError
from .places import INSTALLED_DAEMON, ROOT

_ELF_IDENTITY = slice(4, 6)  # 32 or 64 bits, byte order
_ELF_MACHINE = slice(18, 20)


def daemon_command() -> list[str]:
    """The daemon's command line: TARVELD from the environment, else the installed program, the plain build's, the demo's."""
    words = shlex.split(os.environ.get("TARVELD", "")) or [str(_built_daemon())]
    return [str(Path(word).resolve()) if "/" in word else word for word in words]


def _built_daemon() -> Path:
    for program in (INSTALLED_DAEMON, ROOT / "build/tarveld", ROOT / "build/release/tarveld"):
        if program.exists():
            return program
    raise SimError("the daemon is not built: cmake -B build -DTARVELD_SIM=ON && cmake --build build first")


def _machine(program: Path) -> tuple[bytes, bytes]:
    head = program.open("rb").read(20)
    return head[_ELF_IDENTITY], head[_ELF_MACHINE]


def _is_native(program: Path) -> bool:
    """Builds for the real card have a uci too, and it does not run here."""
    return program.exists() and _machine(program) == _machine(Path("/proc/self/exe"))


def _candidates() -> list[Path]:
    if "TARVEL_SIM_BIN" in os.environ:
        return [Path(os.environ["TARVEL_SIM_BIN"]).resolve()]
    beside_daemon = Path(daemon_command()[-1]).parent / "sim/bin"
    others = sorted(ROOT.glob("build/*/sim/bin"), key=lambda found: found.stat().st_mtime, reverse=True)
    return [beside_daemon, ROOT / "build/sim/bin", *others]


def sim_programs() -> dict[str, str]:
    for directory in _candidates():
        if _is_native(directory / "uci") and _is_native(directory / "gate"):
            tar = os.environ.get("TARVEL_SIM_TAR") or shutil.which("tar") or "/usr/bin/tar"
            built = {name: str(directory / name) for name in ("uci", "gate", "libsetlbf.so")}
            return {**built, "tar": tar}
    raise SimError("the simulated card's programs are not built: cmake --build with TARVELD_SIM=ON first")
