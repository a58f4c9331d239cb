# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the card sees of the machine's files: nearly everything, read-only, with its own system directories in front."""

import os
from pathlib import Path

import kernel

# The node each path in the card's /dev is bound from; making nodes is refused to an ordinary user.
_NODES = ("null", "zero", "full", "random", "urandom", "tty")
_LINKS = {"fd": "/proc/self/fd", "stdin": "fd/0", "stdout": "fd/1", "stderr": "fd/2"}
_VOLATILE = ("/tmp", "/var")


class _Kept:
    """Directories and nodes of the machine that must stay reachable behind mounts; held by descriptor until then."""

    def __init__(self, paths: list[str]) -> None:
        self._held = {path: os.open(path, os.O_PATH | os.O_CLOEXEC) for path in paths}

    def bind(self, path: str, target: str | None = None) -> None:
        where = target or path
        if os.path.isdir(f"/proc/self/fd/{self._held[path]}"):
            os.makedirs(where, exist_ok=True)
        else:
            os.makedirs(os.path.dirname(where), exist_ok=True)
            Path(where).touch()
        kernel.bind(f"/proc/self/fd/{self._held[path]}", where)

    def close(self) -> None:
        for descriptor in self._held.values():
            os.close(descriptor)


def _overlay(directory: str, store: str) -> None:
    upper, work = f"{store}/upper", f"{store}/work"
    os.makedirs(upper)
    os.makedirs(work)
    kernel.mount("overlay", directory, "overlay", options=f"lowerdir={directory},upperdir={upper},workdir={work}")


def _protect_machine(writable: list[str]) -> None:
    """Makes every mount that came from the machine read-only, but for the given ones."""
    own = {"/proc", "/run", "/etc", "/tmp", "/var", "/dev", os.path.realpath("/lib"), *writable}
    for line in Path("/proc/self/mountinfo").read_text().splitlines():
        target = line.split()[4].encode().decode("unicode_escape")
        if any(target == path or target.startswith(path + "/") for path in own):
            continue
        try:
            kernel.make_read_only(target)
        except OSError:
            pass  # a mount with locked flags cannot be changed by us, nor written to by an ordinary user


def prepare(directory: str, binds: list[str]) -> None:
    """Builds the card's file system in the mount namespace of this process.

    `directory` becomes /run/card; each path of `binds` stays where it is, writable, even below a hidden directory.
    """
    nodes = [f"/dev/{node}" for node in _NODES if os.path.exists(f"/dev/{node}")]
    shell = os.path.realpath("/bin/sh")
    kept = _Kept([directory, shell, *binds, *nodes])
    kernel.tmpfs("/run")
    kept.bind(directory, "/run/card")
    kept.bind(shell, "/run/programs/sh")
    _overlay("/etc", "/run/overlay/etc")
    _overlay(os.path.realpath("/lib"), "/run/overlay/lib")
    for path in ("/etc/init.d", "/etc/rc.d", "/tmp", "/var", "/dev"):
        os.makedirs(path, exist_ok=True)
        kernel.tmpfs(path, "1777" if path == "/tmp" else "755")
    for path in [*binds, *nodes]:
        kept.bind(path)
    for name, target in _LINKS.items():
        os.symlink(target, f"/dev/{name}")
    _protect_machine(binds)
    kept.close()


def empty_volatile() -> None:
    """Empties /tmp and /var as a power cycle does, except for what is bound there."""
    for directory in _VOLATILE:
        _empty(Path(directory), _mounts())


def _mounts() -> set[str]:
    # os.path.ismount() takes every file of an overlay for a mount: it has another device number than its directory.
    return {line.split()[4] for line in Path("/proc/self/mountinfo").read_text().splitlines()}


def _empty(directory: Path, mounts: set[str]) -> bool:
    """True if nothing is left in the directory."""
    is_empty = True
    for entry in list(directory.iterdir()):
        if str(entry) in mounts:
            is_empty = False
        elif entry.is_dir() and not entry.is_symlink():
            if _empty(entry, mounts):
                entry.rmdir()
            else:
                is_empty = False
        else:
            entry.unlink()
    return is_empty


def remove(path: Path) -> None:
    """Whatever it is: a file, a link, or a directory with all that is in it; no error if there is nothing."""
    if path.is_dir() and not path.is_symlink():
        if _empty(path, _mounts()):
            path.rmdir()
    else:
        path.unlink(missing_ok=True)


def clear(directory: str) -> None:
    """Makes an empty directory of whatever is there; one that is a mount stays one."""
    path = Path(directory)
    if path.is_symlink() or not path.is_dir():
        remove(path)
        path.mkdir(parents=True)
    _empty(path, _mounts())
