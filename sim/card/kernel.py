# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The few system calls that Python does not offer."""

import ctypes
import os
import signal

MS_RDONLY, MS_NOSUID, MS_NODEV, MS_NOEXEC, MS_REMOUNT, MS_BIND, MS_REC, MS_PRIVATE = 1, 2, 4, 8, 32, 4096, 16384, 1 << 18
CLONE_NEWNS, CLONE_NEWUTS, CLONE_NEWIPC, CLONE_NEWPID, CLONE_NEWNET = 0x20000, 0x4000000, 0x8000000, 0x20000000, 0x40000000

_libc = ctypes.CDLL(None, use_errno=True)
_PR_SET_PDEATHSIG = 1
_CLOCK_AND_REBOOT = (25, 22)  # CAP_SYS_TIME, CAP_SYS_BOOT


def _check(result: int, what: str) -> None:
    if result != 0:
        code = ctypes.get_errno()
        raise OSError(code, os.strerror(code), what)


def mount(source: str, target: str, filesystem: str = "", flags: int = 0, options: str = "") -> None:
    names = (source.encode(), target.encode(), filesystem.encode() or None)
    _check(_libc.mount(*names, ctypes.c_ulong(flags), options.encode() or None), target)


def proc(target: str) -> None:
    """The processes of this process' namespace."""
    mount("proc", target, "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC)


def make_private(target: str) -> None:
    """What is mounted below it from now on shows nowhere else."""
    mount("none", target, flags=MS_REC | MS_PRIVATE)


def bind(source: str, target: str) -> None:
    mount(source, target, flags=MS_BIND | MS_REC)


def make_read_only(target: str) -> None:
    """What is mounted there; other mounts of the same keep their rights.

    An ordinary user may only add to the restrictions that a mount has.
    """
    kept = os.statvfs(target).f_flag & (os.ST_NOSUID | os.ST_NODEV | os.ST_NOEXEC)  # numbered as mount() has them
    mount("none", target, flags=MS_REMOUNT | MS_BIND | MS_RDONLY | kept)


def bind_read_only(path: str) -> None:
    bind(path, path)
    make_read_only(path)


def tmpfs(target: str, mode: str = "755") -> None:
    mount("tmpfs", target, "tmpfs", options=f"mode={mode}")


def unshare(namespaces: int) -> None:
    _check(_libc.unshare(namespaces), "unshare")


def setns(namespace: int, kind: int) -> None:
    _check(_libc.setns(namespace, kind), "setns")


def end_with_parent() -> None:
    _check(_libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0), "prctl")


def refuse_dangerous_capabilities() -> None:
    """A card must not even be able to ask for another time or a reboot of the machine it is simulated on."""
    status = open("/proc/self/status", encoding="ascii").read()
    bounding = int(status.split("CapBnd:")[1].split()[0], 16)
    if any(bounding >> capability & 1 for capability in _CLOCK_AND_REBOOT):
        raise SystemExit("card: started with the right to set the clock or to reboot; refusing to go on")
