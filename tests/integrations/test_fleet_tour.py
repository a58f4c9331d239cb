# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The tour of a fleet, part by part on a few cards: what it shows holds, and what does not hold ends it."""

import re
from collections.abc import Iterator
from dataclasses import replace
from pathlib import Path

import listing
import pytest
from commands import DemoError
from monitoring import Monitoring, monitored
from playing import Ansible
from sites import GROUPS, Site, running_site
from tarvelsim import WaitTimeout

OLD, NEW = "KERN-6.1.0", "KERN-7.0.0"


@pytest.fixture(scope="module")
def shared_site(tmp_path_factory: pytest.TempPathFactory) -> Iterator[Site]:
    with running_site(4, tmp_path_factory.mktemp("site")) as site:
        yield site


@pytest.fixture
def site(shared_site: Site, tmp_path: Path) -> Site:
    """The cards are as new, and the operator knows where they are."""
    for card in shared_site.cards:
        card.inside.heal()
        card.inside.write("/etc/pnr/kernel", f"{OLD}\n")
    site = replace(shared_site, ansible=Ansible(tmp_path))
    known = [f"{card.name} {card.planned_addresses()['eth0']}" for card in site.cards]
    site.write_groups([f"@site {site.names}", *known])
    return site


def test_who_is_heard_is_written_down(site: Site) -> None:
    written = (site.folder / GROUPS).read_text()
    (site.folder / GROUPS).unlink()
    listing.discover(site)
    assert (site.folder / GROUPS).read_text() == written


def test_a_card_that_is_silent_ends_the_tour(site: Site) -> None:
    site.cards[3].set_link("eth0", False)
    try:
        with pytest.raises(DemoError, match="discover .* ended with"):
            listing.discover(replace(site, patience=2))
    finally:
        site.cards[3].set_link("eth0", True)


def test_who_is_heard_from_elsewhere_or_not_at_all_is_named(site: Site) -> None:
    table = ["TARGET INTERFACE REACHABLE NAME", "10.0.0.12 lan0 yes card1", "10.0.0.11 lan0 yes card2", "10.0.0.13 lan0 yes card3"]
    with pytest.raises(DemoError, match="not theirs: card1, card2, card4$"):
        listing.heard_in(site, "\n".join(table))


def test_the_page_stays_and_its_place_is_told(site: Site, capsys: pytest.CaptureFixture[str]) -> None:
    page = site.folder / "page.html"
    listing.report(site, page)
    assert page.exists()
    assert f"over: {page}\n" in capsys.readouterr().out
    text = page.read_text()
    for broken in (re.sub(r">card2\b", ">card5", text), text.replace("4 cards", "3 cards"), ""):
        with pytest.raises(DemoError):
            listing.check_page(site, broken)


def test_prometheus_tells_what_the_cards_have(site: Site, capsys: pytest.CaptureFixture[str]) -> None:
    site.cards[0].inside.write("/etc/pnr/kernel", f"{NEW}\n")
    with monitored(site) as monitoring:
        monitoring.poll()
        monitoring.expect_up(4)
        monitoring.expect_kernels({OLD: 3, NEW: 1})
        said = capsys.readouterr().out
        assert "{} => 4 @" in said
        assert f'{{version="{OLD}"}} => 3 @' in said
        with pytest.raises(WaitTimeout, match="tells .*4.* instead of .*5"):
            Monitoring(replace(site, patience=0), monitoring.server).expect_up(5)
