# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What each job is to reach. A job without a goal is only shown."""

from dataclasses import dataclass


@dataclass(frozen=True)
class Goal:
    limit: float
    at_least: bool = False

    def is_met_by(self, figure: float) -> bool:
        return figure >= self.limit if self.at_least else figure <= self.limit

    def __str__(self) -> str:
        return f"{'>=' if self.at_least else '<='} {self.limit:g}"

    def to_json(self) -> str:
        return str(self)


_GOALS: dict[tuple[str, str | None], Goal] = {
    ("unknown command", "same"): Goal(1.03),
    ("versions", "same"): Goal(1.03),
    ("versions", "bare"): Goal(1.12),
    ("versions, p99", "same"): Goal(1.3),
    ("time reference get", "same"): Goal(1.05),
    ("connect, versions, close", "same"): Goal(1.03),
    ("connect, versions, close", "bare"): Goal(1.15),
    ("upload, throughput", "same"): Goal(0.95, at_least=True),
    ("upload, memory growth", None): Goal(0),
    ("IP configuration get", "same"): Goal(1.05),
    ("datagram for another device", "same"): Goal(1.05),
    ("datagram for another name", "same"): Goal(1.05),
    ("start to listening", "same"): Goal(1.05),
    ("idle, wake-ups in 10 s", None): Goal(0),
    ("private memory", None): Goal(440),
    ("private memory, growth", None): Goal(0),
    ("text on the card, own", None): Goal(96_000),
    ("text on the card, static file", None): Goal(700_000),
    ("client --version", "hello, world"): Goal(1.12),
    ("client, versions of 8 cards", "the slowest alone"): Goal(1.2),
    ("client, sending an archive", "plain sender"): Goal(0.95, at_least=True),
    ("client, checking an archive", "gzip -dc, sha256sum"): Goal(1.2),
}


def goal_of(job: str, against: str | None) -> Goal | None:
    return _GOALS.get((job, against))
