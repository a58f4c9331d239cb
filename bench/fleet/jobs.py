# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the client is asked to do with a fleet."""

import io
import os
import tarfile
from collections.abc import Callable, Sequence
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from ipaddress import ip_network
from pathlib import Path

import paths  # noqa: F401
from client import Client, Run
from tarvelsim import Card, Lan, switches
from tarvelsim.troubles import misplaced_addresses

_ARCHIVE_SIZE = 1 << 20
_BATCH = 100
_KERNEL = "KERN-9.9.9"  # no card has it from the factory
_MISPLACE = """
uci set network.lanvemt2eth1.ipaddr=$1
uci set network.lanvemt2eth2.ipaddr=$2
uci commit network
/etc/init.d/network restart
"""
_RESTART_TAKES = 120  # seconds at most, on a machine that does much else
_WAIT = "900"  # seconds; a card that restarts beside sixty others takes its time


@dataclass(frozen=True)
class Fleet:
    lan: Lan
    cards: Sequence[Card]

    @property
    def addresses(self) -> list[str]:
        return [card.planned_addresses()["eth0"] for card in self.cards]

    @property
    def netmask(self) -> str:
        return str(ip_network(f"0.0.0.0/{self.lan.plan.segments()[0].prefix}").netmask)


def _discover(client: Client, fleet: Fleet, _: Path) -> Run:
    """Each card has two addresses."""
    run = client.run("discover")
    expected = {address for card in fleet.cards for address in card.planned_addresses().values()}
    silent = len(expected - {result["target"] for result in run.results})
    complaints = f"{silent} addresses were not heard\n" if silent else ""
    return Run(run.seconds, run.megabytes, run.results, complaints + run.complaints)


def _versions(client: Client, fleet: Fleet, _: Path) -> Run:
    return client.run("versions", targets=fleet.addresses)


def _upload(client: Client, fleet: Fleet, folder: Path) -> Run:
    return client.run("firmware", "upload", str(_archive(folder)), targets=fleet.addresses)


def _upgrade(client: Client, fleet: Fleet, folder: Path) -> Run:
    """Each card is to tell of the new version in the end."""
    expected = folder / "expected"
    expected.write_text(f"kernel {_KERNEL}\n", encoding="ascii")
    words = ["firmware", "upgrade", "--batch", str(_BATCH), "--expect", str(expected), str(_archive(folder))]
    return client.run(*words, targets=fleet.addresses)


def _archive(folder: Path) -> Path:
    """For the card's upgrade script, which takes what is below pnr/."""
    archive = folder / "firmware.tar.gz"
    with tarfile.open(archive, "w:gz", compresslevel=1) as packed:
        for name, content in (("pnr/kernel", f"{_KERNEL}\n".encode()), ("image", os.urandom(_ARCHIVE_SIZE))):
            member = tarfile.TarInfo(name)
            member.size = len(content)
            packed.addfile(member, io.BytesIO(content))
    return archive


def _misplace(indexed: tuple[int, Card]) -> None:
    number, card = indexed
    before = card.network.mark()
    card.inside.run(["sh", "-c", _MISPLACE, "sh", *misplaced_addresses(number).values()])
    card.network.wait(before, _RESTART_TAKES)


def _rescue(client: Client, fleet: Fleet, _: Path) -> Run:
    """Of all cards, which get addresses of other networks first. The client is to know where they were.

    Nobody has heard of them for a while: an address that answered just now counts as one that somebody has.
    """
    with ThreadPoolExecutor(os.cpu_count()) as several:
        list(several.map(_misplace, enumerate(fleet.cards)))
    switches.introduce([card.place for card in fleet.cards], fleet.lan.plan)
    for card, address in zip(fleet.cards, fleet.addresses, strict=True):
        client.remember(f"ip-{card.name}", f"VemkEth1 Static ={address} ={fleet.netmask} - 1000000000\n")
    return _together([_rescue_on(client, fleet, lan) for lan in sorted({card.place.lan for card in fleet.cards})])


def _rescue_on(client: Client, fleet: Fleet, lan: int) -> Run:
    """Whoever knows where a card is asks there only: all cards of all networks would hear each broadcast otherwise."""
    device = fleet.lan.plan.segments(lan)[0].client_device
    names = [card.name for card in fleet.cards if card.place.lan == lan]
    return client.run("-i", device, "ip", "rescue", "--wait", _WAIT, targets=names)


def _together(runs: Sequence[Run]) -> Run:
    """One after the other."""
    results = [result for run in runs for result in run.results]
    complaints = "".join(run.complaints for run in runs)
    return Run(sum(run.seconds for run in runs), max(run.megabytes for run in runs), results, complaints)


Job = Callable[[Client, Fleet, Path], Run]

JOBS: dict[str, tuple[str, Job]] = {
    "discover": ("discover", _discover),
    "versions": ("versions by address", _versions),
    "upload": ("firmware upload of 1 MB", _upload),
    "upgrade": (f"firmware upgrade, {_BATCH} at a time", _upgrade),
    "rescue": ("ip rescue", _rescue),
}
