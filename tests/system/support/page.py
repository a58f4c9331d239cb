# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A report, taken apart as a browser would."""

import base64
import hashlib
import math
from html.parser import HTMLParser

VOID = {"meta", "input"}
Attributes = dict[str, str]


class Page(HTMLParser):
    """Each element with its attributes, and what is in the tables, by their ids without -table."""

    def __init__(self, source: str) -> None:
        super().__init__(convert_charrefs=True)
        self.source = source
        self.elements: list[tuple[str, Attributes]] = []
        self.style = ""
        self.script = ""
        self.text = ""
        self.reasons: list[str] = []
        self._tables: dict[str, list[list[str]]] = {}
        self._open: list[tuple[str, Attributes]] = []
        self._table = ""
        self.feed(source)
        self.close()

    @property
    def policy(self) -> str:
        (policy,) = [a["content"] for tag, a in self.elements if "http-equiv" in a]
        return policy

    @staticmethod
    def hash_of(text: str) -> str:
        return f"'sha256-{base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()}'"

    def rows(self, table: str) -> dict[str, list[str]]:
        """The cells of each row by its head."""
        return {row[0]: row[1:] for row in self._tables.get(f"{table}-table", [])}

    def row_heads(self, table: str) -> list[str]:
        return list(self.rows(table))

    def check(self) -> None:
        """What holds for each such page."""
        assert self._open == [], self._open
        assert self.source.startswith("<!DOCTYPE html>")
        assert ("html", {"lang": "en"}) in self.elements
        ids = [attributes["id"] for _, attributes in self.elements if "id" in attributes]
        assert len(ids) == len(set(ids))
        for _, attributes in self.elements:
            assert set(attributes.get("aria-labelledby", "").split()) <= set(ids)
            assert attributes.get("href", "#")[1:] in {"", *ids}
        tags = [tag for tag, _ in self.elements]
        assert tags.count("caption") == tags.count("table")
        assert {a["scope"] for tag, a in self.elements if tag == "th"} <= {"col", "row"}
        assert not [a for _, a in self.elements if "aria-sort" in a]

    def _is_in(self, tag: str, name: str = "") -> bool:
        return any(one == tag and name in attributes.get("class", "") for one, attributes in self._open)

    def handle_starttag(self, tag: str, attrs: list[tuple[str, str | None]]) -> None:
        attributes = {name: value or "" for name, value in attrs}
        self.elements.append((tag, attributes))
        if tag in VOID:
            return
        if tag == "table":
            self._table = attributes["id"]
            self._tables[self._table] = []
        elif tag == "tr" and "hidden" not in attributes:
            self._tables[self._table].append([])
        elif tag in {"td", "th"} and attributes.get("scope") != "col" and not self._is_hidden():
            self._tables[self._table][-1].append("")
        elif tag == "h3":
            self.reasons.append("")
        self._open.append((tag, attributes))

    def _is_hidden(self) -> bool:
        return any("hidden" in attributes for _, attributes in self._open)

    def handle_endtag(self, tag: str) -> None:
        assert self._open.pop()[0] == tag, (tag, self.getpos())
        if tag == "table":
            self._tables[self._table] = [row for row in self._tables[self._table] if row]

    def handle_data(self, data: str) -> None:
        if self._is_in("style"):
            self.style += data
        elif self._is_in("script"):
            self.script += data
        else:
            self.text += data
            self._note(data)

    def _note(self, data: str) -> None:
        cells = [attributes for tag, attributes in self._open if tag in {"td", "th"}]
        if cells and cells[-1].get("scope") != "col" and not self._is_hidden():
            self._tables[self._table][-1][-1] += data
        if self._is_in("ul", "reasons"):
            self.reasons[-1] += data


def _luminance(colour: str) -> float:
    parts = (int(colour[at : at + 2], 16) / 255 for at in (1, 3, 5))
    red, green, blue = (part / 12.92 if part <= 0.04045 else math.pow((part + 0.055) / 1.055, 2.4) for part in parts)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def contrast(one: str, other: str) -> float:
    """As the accessibility guidelines define it."""
    darker, lighter = sorted((_luminance(one), _luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)
