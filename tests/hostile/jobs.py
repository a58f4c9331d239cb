# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""One request of each kind, and what the card may answer to it when something fails on the way."""

from collections.abc import Iterable
from dataclasses import dataclass

from support.documents import ip_configuration, time_reference
from twin.actions import Action, Connection, Datagrams
from wire import Command, Format, Header, Sections, golden, request


DEVICE = "lan0"


@dataclass(frozen=True)
class Job:
    name: str
    over_tcp: bool
    data: bytes

    @property
    def command(self) -> int:
        return Header.decode(self.data).command

    @property
    def action(self) -> Action:
        return Connection(self.data) if self.over_tcp else Datagrams(DEVICE, (self.data,))


def _upload(command: Command) -> bytes:
    exchange = golden.UPLOAD if command == Command.UPLOAD else golden.UPGRADE
    return exchange.request


def _manual() -> bytes:
    return request(Command.TIME_SET, time_reference("Manual", "10.0.0.9"))


def _damaged() -> bytes:
    payload = Sections(data=b"no archive").encode()
    header = Header(command=Command.UPLOAD, message_format=Format.SECTION_8, payload_length=len(payload))
    return header.encode() + payload


def others(known: tuple[Job, ...], exchanges: Iterable[golden.Exchange]) -> tuple[Job, ...]:
    """The commands that have no job yet, each as in its worked example."""
    numbers = {job.command for job in known}
    jobs = (Job(exchange.name, exchange in golden.TCP, exchange.request) for exchange in exchanges)
    return tuple(job for job in jobs if job.command not in numbers)


_CHOSEN = (
    Job("versions", True, request(Command.VERSIONS)),
    Job("unknown command over TCP", True, request(0x42, "text")),
    Job("wrong service", True, request(Command.VERSIONS, service=3)),
    Job("upload", True, _upload(Command.UPLOAD)),
    Job("damaged upload", True, _damaged()),
    Job("upgrade", True, _upload(Command.UPGRADE)),
    Job("time reference get", True, request(Command.TIME_GET)),
    Job("time reference by NTP", True, request(Command.TIME_SET, time_reference("Ntp", "10.0.0.9"))),
    Job("time reference by hand", True, _manual()),
    Job("IP configuration get", False, request(Command.IP_GET, ip_configuration())),
    Job("IP configuration set", False, golden.IP_SET.request),
    Job("reboot", False, golden.REBOOT.request),
)
JOBS = _CHOSEN + others(_CHOSEN, golden.EVERY)
# Those that change settings, and so could leave half of a change behind.
CHANGES = tuple(job for job in JOBS if job.name in ("upload", "time reference by NTP", "IP configuration set"))
