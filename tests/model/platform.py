# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The programs that the daemon runs through the shell."""

import re
import subprocess
import tempfile
from pathlib import Path

from .card import PART_NUMBERS, Card

ARCHIVE = "firmware.tar.gz"
# Whatever the shell takes as it stands. What it would interpret is the subject of other tests.
_RESULT_FILE = "/tmp/uci.tmp"
_PLAIN = re.compile(rf"[A-Za-z0-9 .:_,+/@%^=\-\[\]]*( > {_RESULT_FILE}| &)?", re.ASCII)


class Unforeseeable(Exception):
    """The shell or a program would do more with these bytes than the model knows."""


_NO_SHELL = 127  # what the C library says when it can make no process


def run(card: Card, command: str) -> int:
    """Notes the command down and does what it does; its exit status, or -1 if nobody knows it."""
    if card.refuses("run"):
        return _NO_SHELL
    card.commands.append(command)
    status = _do(card, command)
    return -1 if card.refuses("wait") else status


def _do(card: Card, command: str) -> int:
    if not _PLAIN.fullmatch(command):
        raise Unforeseeable(command)
    if command.endswith(f" > {_RESULT_FILE}"):
        card.files[_RESULT_FILE] = b""  # the shell's doing, whatever becomes of the program
    words = command.removesuffix("&").split(" > ")[0].split()
    program = words[0].rsplit("/", 1)[-1]
    fault = card.faults.get(program)
    if fault is not None and fault.matching in " ".join(words[1:]):
        # In the background nobody waits for the status.
        status = 0 if command.endswith("&") else fault.status
    else:
        status = _PROGRAMS[program](card, words[1:])
    return status


def _uci(card: Card, words: list[str]) -> int:
    verb, arguments = words[1], words[2:]
    if len(arguments) > 1:
        return 255
    argument = arguments[0] if arguments else ""
    done = True
    if verb == "get":
        value = card.settings.get(argument)
        if value is not None:
            text = value if isinstance(value, str) else " ".join(value)
            card.files[_RESULT_FILE] = text.encode() + b"\n"
        done = value is not None
    elif verb == "set":
        key, _, text = argument.partition("=")
        done = card.settings.put(key, text)
    elif verb == "delete":
        done = card.settings.delete(argument)
    elif verb == "commit":
        card.settings.commit()
    elif verb == "revert":
        card.settings.revert(argument)
    elif verb != "changes":
        raise Unforeseeable(verb)
    return 0 if done else 1


def _time_service(card: Card, words: list[str]) -> int:
    if words[0] in ("enable", "disable"):
        card.ntp_enabled = words[0] == "enable"
    return 0


def _other_time_service(_card: Card, _words: list[str]) -> int:
    return 0


def _network(_card: Card, _words: list[str]) -> int:
    raise Unforeseeable("a restart of the network takes the client's way to the card away")


def _reboot(_card: Card, _words: list[str]) -> int:
    raise Unforeseeable("after a reboot the card is another one")


def _tar(card: Card, _words: list[str]) -> int:
    """The real one, on the same bytes, in a directory like the card's."""
    with tempfile.TemporaryDirectory() as directory:
        for name, content in card.upgrade_tree.items():
            path = Path(directory, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
        done = subprocess.run(
            ["tar", "-xzvf", ARCHIVE, "-C", directory], cwd=directory, capture_output=True, check=False
        )
        card.upgrade_tree = files_below(Path(directory))
    return done.returncode


def files_below(directory: Path) -> dict[str, bytes]:
    paths = (path for path in directory.rglob("*") if path.is_file() and not path.is_symlink())
    return {str(path.relative_to(directory)): path.read_bytes() for path in paths}


def _upgrade(card: Card, _words: list[str]) -> int:
    """The simulated card's: the files below pnr/ become part numbers."""
    fresh = {name: content for name, content in card.upgrade_tree.items() if name.startswith("pnr/")}
    if not fresh:
        return 1
    if any(name.count("/") > 1 for name in fresh):
        raise Unforeseeable("a directory below pnr/")
    for name, content in fresh.items():
        card.files[PART_NUMBERS + name.removeprefix("pnr/")] = content
        del card.upgrade_tree[name]
    return 0


_PROGRAMS = {
    "uci": _uci,
    "ntpd": _time_service,
    "ntpdate": _other_time_service,
    "network": _network,
    "reboot": _reboot,
    "tar": _tar,
    "fwupgrade": _upgrade,
}
