# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Runs a command in a fresh LAN and leaves nothing behind."""

import os
import shutil
import signal
import subprocess
import sys
import tempfile
from collections.abc import Sequence
from pathlib import Path

from . import namespaces
from .errors import SimError
from .places import LAN_PROGRAM
from .plan import Plan

PREFIX = "tarvel-lan."
# Even if this process is killed without warning, the LAN ends with it.
_TIED_TO_US = ["setpriv", "--pdeathsig", "KILL", "--"]


def _check_namespaces() -> None:
    probe = subprocess.run(namespaces.lan_command(["true"]), capture_output=True, text=True, check=False)
    if probe.returncode != 0:
        raise SimError(f"{namespaces.why_forbidden()} ({probe.stderr.strip()})")


def _await_first_process(unshare: subprocess.Popen[bytes], run_dir: Path) -> None:
    """Notes the LAN's first process, for those who want to join from outside."""
    pid = None
    while pid is None and unshare.poll() is None:
        pid = namespaces.only_child(unshare.pid)
    (run_dir / "pid").write_text(f"{pid}\n")


def run_in_lan(command: Sequence[str], plan: Plan = Plan()) -> int:
    """The exit status is the command's. All processes of the LAN are gone afterwards, and its directory too."""
    os.environ["PATH"] = namespaces.with_system_path(os.environ.get("PATH", ""))
    _check_namespaces()
    run_dir = Path(tempfile.mkdtemp(prefix=PREFIX))
    plan.save(run_dir)
    inside = [namespaces.PYTHON, str(Path(__file__).with_name("lan_init.py")), str(run_dir), *command]
    unshare = None
    try:
        unshare = subprocess.Popen(_TIED_TO_US + namespaces.lan_command(inside))
        # Ctrl-C goes to the command, which decides; this process waits for it in any case.
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        for ending in (signal.SIGTERM, signal.SIGHUP):
            signal.signal(ending, lambda number, _: sys.exit(128 + number))
        _await_first_process(unshare, run_dir)
        status = unshare.wait()
        return status if status >= 0 else 128 - status
    finally:
        if unshare is not None:
            unshare.kill()
            unshare.wait()
        shutil.rmtree(run_dir, ignore_errors=True)


def main(arguments: Sequence[str]) -> int:
    if not arguments or arguments[0].startswith("-"):
        print(f"usage: {LAN_PROGRAM} COMMAND [ARGUMENT...]\nRuns the command on the client side of a fresh simulated LAN.")
        return 0 if arguments and arguments[0] in ("-h", "--help") else 2
    try:
        return run_in_lan(arguments)
    except SimError as error:
        print(f"{LAN_PROGRAM}: {error}", file=sys.stderr)
        return 1
