# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Commands 16 and 17: the time reference is told and set."""

import calendar
import re
from datetime import date

from . import header, platform, uci
from .card import Card
from .header import Header
from .platform import Unforeseeable
from .reader import Reader
from .stream import Stream

_NOW = "2000-01-01T00:00:00"  # stands for the time of day, which nobody foresees
_SERVER = "system.ntp.server"
LOCK = "/var/timesettings.lock"
_LARGEST_PAYLOAD = 1024
_ELEMENT = "TimeReferenceConfiguration"
_LONGEST_ADDRESS = 99
# Numbers that every C library scans alike; white space in front of one is skipped.
_DATE_TIME = re.compile(r"\s*(\d+)-\s*(\d+)-\s*(\d+)T\s*(\d+):\s*(\d+):\s*(\d+)", re.ASCII)
_MOST_DIGITS = 4
_LATEST = (1 << 31) - 1  # of a signed number of 32 bits


def get(card: Card, stream: Stream, request: Header) -> None:
    server = _current_server(card)
    if server is None:
        stream.fail(request)
        return
    mode = "Ntp" if card.ntp_enabled and not card.refuses("look for the start link") else "Manual"
    text = f'<{_ELEMENT} Mode="{mode}" NtpServer="{server or "NOT CONFIGURED"}" DateTime="{_NOW}"/>'
    stream.answer(header.reply(request, header.SUCCESS, text.encode("utf-8", "surrogateescape")))


def _current_server(card: Card) -> str | None:
    value = uci.get(card, _SERVER)
    return None if value is None else value[:_LONGEST_ADDRESS]


def set_(card: Card, stream: Stream, request: Header) -> None:
    if not request.has_only_text:
        card.warning("NTPConfigSet message should only contain a 8-bit section!")
        stream.fail(request)
        return
    if request.payload_length > _LARGEST_PAYLOAD:
        card.warning("Payload is too big")
        stream.fail(request)
        return
    payload = stream.receive(request.payload_length)
    if payload is None:
        if stream.is_broken:
            stream.fail(request)
        return
    size = int.from_bytes(payload[:4], "little")
    if _parse_and_apply(card, payload[4 : 4 + size]):
        stream.answer(header.reply(request, header.SUCCESS))
    else:
        stream.fail(request)


def _parse_and_apply(card: Card, text: bytes) -> bool:
    with Reader(text) as reader:
        attributes = _attributes(card, reader)
    if attributes is None:
        return False
    mode, server, when = attributes
    seconds = _seconds(card, when)
    return seconds is not None and _apply(card, mode, server, seconds)


def _attributes(card: Card, reader: Reader) -> tuple[str, str, str] | None:
    if not reader:
        card.warning("xmlReaderForDoc() failed: *")
        return None
    result = reader.read()
    if result != 1:
        text = "xmlTextReaderRead() failed: *" if result < 0 else "Time reference configuration not found in message"
        card.warning(text)
        return None
    name = reader.name()
    if name is None:
        card.warning("Failed to find node name in message")
        return None
    if not name.startswith(_ELEMENT):
        card.warning(f'Bad node name: "{name}" instead of "{_ELEMENT}"')
        return None
    values = {}
    for attribute in ("Mode", "NtpServer", "DateTime"):
        values[attribute] = reader.attribute(attribute)
        if values[attribute] is None:
            card.warning(f"Getting {attribute} attribute FAILED: *")
    mode, server, when = values.values()
    if mode is None or server is None or when is None:
        return None
    return mode, server, when


def _seconds(card: Card, text: str) -> int | None:
    found = _DATE_TIME.match(text)
    if found is None:
        if re.search(r"[+-]\d", text) or re.search(r"\d{5}", text):
            raise Unforeseeable(f"signs and long numbers are scanned differently: {text}")
        card.warning("Parsing DateTime FAILED")
        return None
    if any(len(number) > _MOST_DIGITS for number in found.groups()):
        raise Unforeseeable(f"long numbers do not fit everywhere: {text}")
    year, month, day, hour, minute, second = (int(number) for number in found.groups())
    years, month = divmod(month - 1, 12)
    if not 1902 <= year + years <= 2037:
        raise Unforeseeable(f"a year that does not fit everywhere: {year}")
    days = date(year + years, month + 1, 1).toordinal() - date(1970, 1, 1).toordinal() + day - 1
    seconds = ((days * 24 + hour) * 60 + minute) * 60 + second
    if seconds > _LATEST:
        raise Unforeseeable(f"a time that does not fit everywhere: {seconds}")
    assert calendar.timegm((year + years, month + 1, day, hour, minute, second)) == seconds
    if seconds == -1:
        card.warning("mktime() FAILED")
        return None
    return seconds


def _apply(card: Card, mode: str, server: str, seconds: int) -> bool:
    """Between the two ends of the lock; whatever fails of these, the descriptor is closed."""
    if card.refuses("open the lock"):
        card.warning(f"open() FAILED: {card.why}")
        return False
    card.files[LOCK] = b""
    if card.refuses("lock"):
        card.warning(f"flock() FAILED: {card.why}")
        return False
    done = _change(card, mode, server, seconds)
    done = _mark(card) and done
    if card.refuses("unlock"):
        card.warning(f"flock() FAILED: {card.why}")
        return False
    if card.refuses("close the lock"):
        card.warning(f"close() FAILED: {card.why}")
        return False
    return done


def _mark(card: Card) -> bool:
    if card.refuses("open the marker"):
        card.warning(f"fopen() FAILED: {card.why}")
        return False
    card.replication_pending = True
    if card.refuses("close the marker"):
        card.warning(f"fclose() FAILED: {card.why}")
    return True


def _change(card: Card, mode: str, server: str, seconds: int) -> bool:
    if mode == "Ntp":
        card.info("Setting NTP time reference")
        done = _set_server(card, server) and _control(card, "enable", "stop", "start")
    elif mode == "Manual":
        card.info("Setting manual time reference")
        done = _set_server(card, server) and _control(card, "disable", "stop") and _set_clock(card, seconds)
    else:
        card.warning(f'Unsupported time reference mode "{mode}"')
        done = False
    return done


def _set_server(card: Card, server: str) -> bool:
    current = _current_server(card)
    if current is None:
        return False
    card.info(f"Current NTP server address: {current}")
    card.info(f"New NTP server address: {server}")
    if server == current:
        card.info("No change in NTP server configuration, keep current configuration file")
        return True
    return uci.put(card, _SERVER, server)


def _control(card: Card, *actions: str) -> bool:
    """What the scripts make of it is not looked at, only whether there was a shell for them."""
    scripts = [f"/etc/init.d/{name} {action}" for action in actions for name in ("ntpdate", "ntpd")]
    return all(platform.run(card, script) != -1 for script in scripts)


def _set_clock(card: Card, seconds: int) -> bool:
    """Nobody on a simulated card may; but the kernel looks at the time before it looks at who sets it."""
    card.info(f"Setting unix time to {seconds}")
    error = "Invalid argument" if seconds < 0 else "Operation not permitted"
    if card.refuses("set the clock"):
        error = card.why
    card.warning(f"clock_settime() FAILED: {error}")
    return False
