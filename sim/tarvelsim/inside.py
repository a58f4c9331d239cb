# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A card from within: its files, its programs, and the switches that make its programs fail or wait."""

import os
import shutil
import subprocess
from collections.abc import Callable, Sequence
from pathlib import Path
from typing import Any

from . import namespaces
from .errors import CommandFailed

_PATIENCE = 120.0  # seconds; on a machine that does much else a program may hardly run at all
_PATH = "/run/bin:/usr/sbin:/usr/bin:/sbin:/bin"


class Inside:
    """`init_pid` tells the card's first process as long as the card runs."""

    def __init__(self, name: str, directory: Path, init_pid: Callable[[], int]) -> None:
        self._name = name
        self._directory = directory
        self._init_pid = init_pid

    # Files

    def path(self, path: str | os.PathLike[str]) -> Path:
        """Where a file of the card is seen from here, for use with open() and the like."""
        return Path(f"/proc/{self._init_pid()}/root{os.fspath(path)}")

    def read(self, path: str) -> str:
        return self.path(path).read_text()

    def read_bytes(self, path: str) -> bytes:
        return self.path(path).read_bytes()

    def write(self, path: str, content: str | bytes) -> None:
        """Makes the directories above the file, too."""
        target = self.path(path)
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(content.encode() if isinstance(content, str) else content)

    def remove(self, path: str) -> None:
        """A file, or a directory with all that is in it; no error if there is none."""
        target = self.path(path)
        if target.is_dir() and not target.is_symlink():
            shutil.rmtree(target)
        else:
            target.unlink(missing_ok=True)

    def exists(self, path: str) -> bool:
        return os.path.lexists(self.path(path))

    def listdir(self, path: str) -> list[str]:
        return sorted(os.listdir(self.path(path)))

    # Programs

    def run(
        self,
        command: Sequence[str],
        *,
        check: bool = True,
        input: str | bytes | None = None,  # as in subprocess.run
        timeout: float = _PATIENCE,
        record: bool = False,
        text: bool = True,
    ) -> "subprocess.CompletedProcess[Any]":
        """Runs a command on the card and captures its output; it is not recorded unless asked for."""
        environment = {"PATH": _PATH, "HOME": "/"} | ({} if record else {"CARD_UNRECORDED": "1"})
        done = subprocess.run(
            namespaces.enter_card_command(self._init_pid(), command),
            env=environment,
            capture_output=True,
            input=input,
            timeout=timeout,
            text=text,
            check=False,
        )
        if check and done.returncode != 0:
            raise CommandFailed(f"{self._name}: {list(command)} ended with {done.returncode}: {done.stderr!r}")
        return done

    def uci(self, *arguments: str) -> str:
        answer: str = self.run(["uci", *arguments]).stdout
        return answer.strip()

    # Switches: names are those of the stand-ins (uci, tar, reboot, network, ntpd, ntpdate, fwupgrade) and sh

    def _switch(self, kind: str, name: str) -> Path:
        return self._directory / "control" / kind / name

    def fail(self, name: str, status: int = 1, matching: str = "") -> None:
        """From now on the program does nothing but end with this status, if its arguments contain the text."""
        self._switch("fail", name).write_text(f"{status} {matching}\n")

    def answer(self, name: str, output: str, matching: str = "") -> None:
        """The same for a program that succeeds and prints this. It takes the place of what `fail` says."""
        self._switch("fail", name).write_text(f"0 {matching}\n{output}")

    def heal(self, name: str | None = None) -> None:
        self._clear("fail", name)

    def hold(self, name: str) -> None:
        """From now on the program, once called and recorded, waits until it is released."""
        self._switch("hold", name).touch()

    def release(self, name: str | None = None) -> None:
        self._clear("hold", name)

    def _clear(self, kind: str, name: str | None) -> None:
        for switch in [self._switch(kind, name)] if name else (self._directory / "control" / kind).iterdir():
            switch.unlink(missing_ok=True)
