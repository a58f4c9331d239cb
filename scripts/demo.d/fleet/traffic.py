# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What went over the wire, as tshark tells it with our dissector."""

import shlex
from pathlib import Path

from commands import check
from dissection import DISSECTOR, Dissection
from narrator import say, show
from sites import Site

_UPGRADE = "tcp && tarvel.command == 8"
_SUCCESS = "1"
_FEW = 6
_COLUMNS = {"_ws.col.Source": "%s", "_ws.col.Destination": "%d", "_ws.col.Info": "%i"}


def show_exchange(site: Site, capture: Path, name: str) -> None:
    """Of one card over its connection."""
    addresses = _addresses(site)
    own = " || ".join(f"ip.addr == {address}" for address, owner in addresses.items() if owner == name)
    display = f"tarvel && tcp && ({own})"
    show([f"$ {shlex.join(['tshark', '-r', capture.name, '-X', f'lua_script:{DISSECTOR.name}', '-Y', display])}"])
    lines = Dissection(capture).lines(*_COLUMNS.values(), display=display)
    check(bool(lines), f"nothing was captured of {name}")
    show(lines, _FEW)


def check_upgrades(site: Site, capture: Path, changed: set[str]) -> None:
    """That these cards were sent firmware, each of them once, and nobody else."""
    addresses = _addresses(site)
    rows = Dissection(capture).fields("tarvel.reply", "tarvel.status", "ip.src", "ip.dst", display=_UPGRADE)
    sent = [addresses[target] for reply, _, _, target in rows if reply == "0"]
    taken = [addresses[source] for reply, status, source, _ in rows if reply == "1" and status == _SUCCESS]
    check(sorted(sent) == sorted(changed), f"firmware went to {sorted(sent)} instead of {sorted(changed)}")
    check(sorted(taken) == sorted(changed), f"firmware was taken by {sorted(taken)} instead of {sorted(changed)}")
    say(f"So it was on the wire: {len(sent)} cards were sent firmware, each once, and all of them took it.")


def _addresses(site: Site) -> dict[str, str]:
    return {address: card.name for card in site.cards for address in card.planned_addresses().values()}
