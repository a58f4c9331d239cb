# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a card has written down: its log, its daemon's output, and what was run on it."""

import re
from dataclasses import dataclass
from pathlib import Path

from .waiting import wait_for

_LINE = re.compile(r"(?P<level>\w+) (?P<ident>[^:\[]*)(?:\[(?P<pid>\d+)\])?: (?P<text>.*)")
_ESCAPE = re.compile(r"\\([\\nt])")
_TAIL = 15


@dataclass(frozen=True)
class LogLine:
    level: str
    ident: str
    pid: int | None
    text: str

    def __str__(self) -> str:
        return f"{self.level} {self.ident}: {self.text}"

    @staticmethod
    def parse(line: str) -> "LogLine":
        parts = _LINE.fullmatch(line)
        if parts is None:
            return LogLine("notice", "unknown", None, line)
        pid = int(parts["pid"]) if parts["pid"] else None
        return LogLine(parts["level"], parts["ident"], pid, unescaped(parts["text"]))


def unescaped(text: str) -> str:
    return _ESCAPE.sub(lambda found: {"\\": "\\", "n": "\n", "t": "\t"}[found[1]], text)


def _complete_lines(path: Path) -> list[str]:
    """A line that is still being written is none yet."""
    if not path.exists():
        return []
    text = path.read_bytes().decode("utf-8", "backslashreplace")
    return text.split("\n")[:-1]


class Records:
    """A mark is a number of lines; pass it as `since` to look only at what came later."""

    def __init__(self, name: str, directory: Path) -> None:
        self.name = name
        self._directory = directory

    @property
    def log_path(self) -> Path:
        return self._directory / "log"

    @property
    def console_path(self) -> Path:
        return self._directory / "console"

    def log_lines(self, since: int = 0, ident: str | None = "tarveld") -> list[LogLine]:
        """The daemon's lines; with ident None those of everybody, the card's own ("card") included."""
        lines = [LogLine.parse(line) for line in _complete_lines(self.log_path)[since:]]
        return [line for line in lines if ident is None or line.ident == ident]

    def log_mark(self) -> int:
        return len(_complete_lines(self.log_path))

    def wait_log(self, text: str, timeout: float = 10, *, since: int = 0, level: str | None = None) -> LogLine:
        """The first line whose text contains the given one."""

        def look() -> LogLine | None:
            lines = self.log_lines(since, ident=None)
            return next((line for line in lines if text in line.text and level in (None, line.level)), None)

        return wait_for(look, timeout, lambda: f"{self.name} did not log {text!r}; {self.log_tail()}")

    def wait_booted(self, count: int, timeout: float) -> int:
        """The mark in front of what the card has logged since it booted for the so many-th time."""
        booted = ("card", f"booted ({count})")

        def look() -> int | None:
            lines = [(line.ident, line.text) for line in self.log_lines(ident=None)]
            return lines.index(booted) if booted in lines else None

        return wait_for(look, timeout, lambda: f"{self.name} did not boot; {self.log_tail()}")

    def log_tail(self) -> str:
        lines = [str(line) for line in self.log_lines(ident=None)[-_TAIL:]]
        return "its log ends with:\n  " + "\n  ".join(lines or ["(nothing)"])

    def console(self) -> str:
        """Standard output and standard error of the daemon."""
        return self.console_path.read_text(errors="backslashreplace") if self.console_path.exists() else ""

    def wait_console(self, text: str, timeout: float = 10, since: int = 0) -> None:
        """`since` is a number of characters here."""
        wait_for(
            lambda: text in self.console()[since:],
            timeout,
            lambda: f"the daemon of {self.name} did not print {text!r} but:\n{self.console()[since:]}",
        )

    def commands(self, since: int = 0) -> list[str]:
        """The exact texts given to the shell."""
        return [unescaped(line) for line in _complete_lines(self._directory / "commands")[since:]]

    def commands_mark(self) -> int:
        return len(self.commands())

    def calls(self, name: str | None = None, since: int = 0) -> list[list[str]]:
        """The exact arguments of the platform's programs, the program itself first."""
        lines = _complete_lines(self._directory / "calls")[since:]
        calls = [[unescaped(word) for word in line.split("\t")] for line in lines]
        return [call for call in calls if name is None or Path(call[0]).name == name]

    def calls_mark(self) -> int:
        return len(self.calls())

    def delays(self, since: int = 0) -> list[float]:
        """The seconds that the platform took for what it did, one after the other."""
        return [float(line) for line in _complete_lines(self._directory / "delays")[since:]]

    def wait_delays(self, count: int, timeout: float = 20, since: int = 0) -> list[float]:
        """The first so many."""
        return wait_for(
            lambda: found if len(found := self.delays(since)[:count]) == count else None,
            timeout,
            lambda: f"{self.name} did not take its time {count} times but {self.delays(since)}",
        )

    def wait_command(self, text: str, timeout: float = 10, since: int = 0) -> str:
        """The first shell text that contains the given one."""
        return wait_for(
            lambda: next((command for command in self.commands(since) if text in command), None),
            timeout,
            lambda: f"{self.name} did not run {text!r} but {self.commands(since)}",
        )

    def wait_call(self, name: str, timeout: float = 10, since: int = 0) -> list[str]:
        return wait_for(
            lambda: next(iter(self.calls(name, since)), None),
            timeout,
            lambda: f"{self.name} did not call {name} but {self.calls(since=since)}",
        )
