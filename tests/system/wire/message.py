# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A header and its payload."""

from dataclasses import dataclass
from typing import Any

from .header import HEADER_SIZE, Header
from .numbers import Format
from .sections import Sections


@dataclass(frozen=True)
class Message:
    header: Header
    payload: bytes = b""

    def encode(self) -> bytes:
        return self.header.encode() + self.payload

    @staticmethod
    def decode(data: bytes) -> "Message":
        return Message(Header.decode(data), data[HEADER_SIZE:])

    @property
    def sections(self) -> Sections:
        return Sections.decode(self.header.message_format, self.payload)

    @property
    def text(self) -> str:
        """The text of the only section, which ends with its only NUL byte."""
        if self.header.message_format != Format.SECTION_8 or self.header.payload_length != len(self.payload):
            raise ValueError(f"not a text message: {self}")
        data = self.sections.data
        if data is None or data.find(b"\0") != len(data) - 1:
            raise ValueError(f"not one terminated text: {data!r}")
        return data[:-1].decode("utf-8", "surrogateescape")


def text_payload(text: str | bytes) -> bytes:
    """A single 8-bit section with the text and its NUL byte."""
    data = text.encode("utf-8", "surrogateescape") if isinstance(text, str) else text
    return Sections(data=data + b"\0").encode()


def request(command: int, text: str | bytes | None = None, **fields: Any) -> bytes:
    """The bytes of a request; `fields` replaces any field of the header, also with a wrong value."""
    payload = b"" if text is None else text_payload(text)
    usual: dict[str, Any] = {
        "command": command,
        "message_format": Format.NONE if text is None else Format.SECTION_8,
        "payload_length": len(payload),
    }
    return Header(**{**usual, **fields}).encode() + payload
