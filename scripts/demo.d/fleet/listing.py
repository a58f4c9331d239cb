# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Who is there, and a page about all of them."""

import re
from pathlib import Path

from commands import check
from narrator import chapter, say, show
from sites import DEVICE, Site

_FEW = 4


def discover(site: Site) -> None:
    chapter("Who is there?")
    asked = ["discover", "--names", site.names, "--expect", str(len(site.cards))]
    table = site.tarvelctl("-i", DEVICE, *asked, most=_FEW)
    heard = heard_in(site, table)
    say(f"All {len(heard)} were heard. They go into the groups file, so that nobody has to be looked for again:")
    lines = [f"@site {site.names}", *(f"{name} {address}" for name, address in heard.items())]
    site.write_groups(lines)
    show(lines, _FEW)


def heard_in(site: Site, table: str) -> dict[str, str]:
    """The address of each card, as the client tells it."""
    rows = (line.split() for line in table.splitlines())
    heard = {row[3]: row[0] for row in rows if len(row) == 4 and row[1] == DEVICE}
    planned = {card.name: card.planned_addresses()["eth0"] for card in site.cards}
    wrong = [name for name in planned if heard.get(name) != planned[name]]
    check(not wrong, f"not heard, or from an address that is not theirs: {', '.join(wrong)}")
    return {name: heard[name] for name in planned}


def report(site: Site, page: Path) -> None:
    chapter("One page about all of them")
    site.tarvelctl("report", "@site", "--output", str(page))
    check_page(site, page.read_text(encoding="utf-8"))
    say(f"It needs nothing but a browser, and stays when this tour is over: {page}")


def check_page(site: Site, text: str) -> None:
    title = f"{len(site.cards)} cards"
    check(title in text.partition("</title>")[0], f"the title of the page does not speak of {title}")
    told = set(re.findall(r'<th scope="row">([^<\n]+)', text))
    absent = [card.name for card in site.cards if card.name not in told]
    check(not absent, f"the page has no row about {', '.join(absent)}")
