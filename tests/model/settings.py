# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Persistent settings with their staging area, as the uci tool keeps them."""

from dataclasses import dataclass, field

Value = str | list[str]


@dataclass
class Settings:
    """Keys are "configuration.section.option". Staged is what was set (or, None, deleted) and not yet committed."""

    committed: dict[str, Value]
    staged: dict[str, Value | None] = field(default_factory=dict)

    def copy(self) -> "Settings":
        return Settings(dict(self.committed), dict(self.staged))

    def get(self, key: str) -> Value | None:
        return self.staged[key] if key in self.staged else self.committed.get(key)

    def has_section(self, key: str) -> bool:
        section = key.rsplit(".", 1)[0] + "."
        return any(known.startswith(section) for known in self.committed)

    def put(self, key: str, value: str) -> bool:
        """An empty value takes the option away."""
        if not self.has_section(key):
            return False
        if value:
            self.staged[key] = value
        elif self.get(key) is not None:
            self.staged[key] = None
        return True

    def delete(self, key: str) -> bool:
        if self.get(key) is None:
            return False
        self.staged[key] = None
        return True

    def commit(self) -> None:
        self.committed = self.view()
        self.staged = {}

    def revert(self, configuration: str) -> None:
        self.staged = {key: value for key, value in self.staged.items() if not key.startswith(configuration + ".")}

    def view(self) -> dict[str, Value]:
        """What everybody reads: committed and staged."""
        everything: dict[str, Value | None] = {**self.committed, **self.staged}
        return {key: value for key, value in everything.items() if value is not None}
