# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A simulated card, made and driven from the client side of its LAN."""

import json
from types import TracebackType
from typing import TYPE_CHECKING, Any

from . import switches
from .daemon import Daemon
from .errors import SimError
from .inside import Inside
from .network import Network
from .nursery import FirstProcess
from .options import CardOptions
from .orders import Orders
from .plan import Place, Segment
from .records import Records
from .waiting import wait_for

if TYPE_CHECKING:
    from .lan import Lan


def _addresses(segment: Segment, number: int) -> dict[str, str]:
    """What a card is told about one of its networks."""
    # All cards' answers to who the client is would go into one table of the kernel, which is not large.
    known = {"router_mac": segment.client_mac} if segment.is_large else {}
    return known | {
        "static": segment.static_address(number),
        "lease": segment.leased_address(number),
        "router": segment.client_address,
        "prefix": str(segment.prefix),
    }


class Card:
    """Made by Lan.card(). Use it in a `with` statement, or call start() and stop().

    `records` is what it has written down, `inside` its files and programs, `daemon` the daemon on it.
    """

    def __init__(self, lan: "Lan", name: str, place: Place, options: CardOptions) -> None:
        self.name = name
        self.place = place
        self.number = place.number
        self.hostname = options.hostname_of(name)
        self.directory = lan.run_dir / name
        self.network = Network(self.directory)
        self._lan = lan
        self._options = options
        self._segments = [each for each in lan.plan.segments(place.lan) if each.card_device in options.devices]
        self._first: FirstProcess | None = None
        self._orders = Orders(name, self.directory)
        self.records = Records(name, self.directory)
        self.inside = Inside(name, self.directory, lambda: self.init_pid)
        self.daemon = Daemon(self._orders, self.records, lambda: self.init_pid)

    # Life

    def start(self, wait: bool = True, timeout: float = 10) -> None:
        """Boots the card; with `wait` until its daemon serves."""
        if self.running:
            raise SimError(f"{self.name} runs already")
        self.directory.mkdir()
        self.daemon.will_start(since=0)
        try:
            self._first = self._lan.nursery.make(self.name, self.directory)
            self._connect()
            self._first.boot(json.dumps(self._settings()))
            self._lan.note_card(self)
        except BaseException:
            self.stop()
            raise
        if wait and self._options.autostart:
            self.daemon.wait_ready(timeout)

    def _settings(self) -> dict[str, Any]:
        segments = self._lan.plan.segments(self.place.lan)
        addresses = {segment.card_device: _addresses(segment, self.number) for segment in segments}
        for device, address in self._options.static.items():
            addresses[device]["static"] = address
        return {"addresses": addresses, **self._options.settings(self.name, self.directory)}

    def _connect(self) -> None:
        """Plugs a cable into each device: a pair of ends, one in the card and one at the LAN's bridge."""
        commands = []
        for segment in self._segments:
            port, mac = segment.port(self.number), segment.card_mac(self.number)
            device = f"name {segment.card_device} address {mac} netns {self.init_pid}"
            commands.append(f"link add name {port} type veth peer {device}")
            commands.append(f"link set {port} master {switches.bridge_of(segment)} up")
        self._lan.run_ip(commands)
        if not self._options.link.is_perfect:
            self._lan.shape(self._options.link, [segment.port(self.number) for segment in self._segments])
            inside = ["nsenter", f"--net=/proc/{self.init_pid}/ns/net", "--"]
            self._options.link.shape([segment.card_device for segment in self._segments], inside)

    def stop(self) -> None:
        """The card vanishes, with all of its processes. Its log stays until the LAN ends or the name is used again."""
        if self._first is None:
            self._lan.forget_card(self, ports=[])
            return
        self._first.end()
        self._first = None
        self._lan.forget_card(self, [segment.port(self.number) for segment in self._segments])

    def reset(self, wait: bool = True, timeout: float = 10) -> None:
        """A card as new, at its number and with its settings; faster than another one. All marks are void."""
        self.daemon.will_start(since=0)
        self._orders.give("reset")
        if wait and self._options.autostart:
            self.daemon.wait_ready(timeout)

    @property
    def boots(self) -> int:
        boots: int = self._orders.give("state")["boots"]
        return boots

    def wait_boot(self, count: int, timeout: float = 15) -> None:
        """Waits until the card has booted so many times, and the daemon serves."""
        mark = self.records.wait_booted(count, timeout)
        self.daemon.will_start(since=mark)
        self.daemon.wait_ready(timeout)

    @property
    def running(self) -> bool:
        return self._first is not None and self._first.runs

    @property
    def init_pid(self) -> int:
        if self._first is None:
            raise SimError(f"{self.name} does not run")
        return self._first.pid

    def __enter__(self) -> "Card":
        self.start()
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.stop()

    # Devices

    def _segment(self, device: str) -> Segment:
        return next(segment for segment in self._lan.plan.segments(self.place.lan) if segment.card_device == device)

    def mac(self, device: str) -> str:
        return self._segment(device).card_mac(self.number)

    def planned_addresses(self) -> dict[str, str]:
        """What the devices have as long as nobody changes it."""
        planned = {segment.card_device: segment.static_address(self.number) for segment in self._segments}
        return planned | {device: address for device, address in self._options.static.items() if device in planned}

    def lease(self, device: str) -> str:
        """The address that the device gets when it asks by DHCP."""
        return self._segment(device).leased_address(self.number)

    def addresses(self, device: str) -> list[str]:
        """What the device has now, with prefix lengths."""
        listing = self.inside.run(["ip", "-json", "-4", "address", "show", "dev", device]).stdout
        links: list[dict[str, Any]] = json.loads(listing)
        return [f"{info['local']}/{info['prefixlen']}" for link in links for info in link.get("addr_info", [])]

    def address(self, device: str) -> str | None:
        return next((address.split("/")[0] for address in self.addresses(device)), None)

    def wait_address(self, device: str, address: str | None, timeout: float = 10) -> None:
        wait_for(
            lambda: self.address(device) == address,
            timeout,
            lambda: f"{device} of {self.name} has {self.addresses(device)} instead of {address}",
        )

    def set_link(self, device: str, up: bool) -> None:
        """Plugs the cable in or pulls it."""
        self._lan.run_ip([f"link set {self._segment(device).port(self.number)} {'up' if up else 'down'}"])
