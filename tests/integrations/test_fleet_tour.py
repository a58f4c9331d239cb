# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""`scripts/demo fleet`, part by part on a few cards: what it shows holds, and what does not hold ends it."""

import os
import re
import subprocess
from collections.abc import Iterator
from dataclasses import replace
from pathlib import Path

import listing
import pytest
from commands import DemoError
from folding import folded
from monitoring import Monitoring, monitored
from playing import INTERPRETER, ROOT, Ansible
from programs import ProgramError
from recording import recorded
from rollout import Rollout
from sites import GROUPS, Site, running_site
from tarvelsim import WaitTimeout
from traffic import check_upgrades, show_exchange

OLD, NEW = "KERN-6.1.0", "KERN-7.0.0"
TOUR = ROOT / "scripts/demo.d/fleet"


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


def test_the_roll_out_stops_and_goes_on_and_the_traffic_says_so(site: Site, capsys: pytest.CaptureFixture[str]) -> None:
    rollout = Rollout(site)
    rest = rollout.stop_at_broken_card()
    assert rest == {"card2", "card3", "card4"}
    assert rollout.kernels() == {OLD: 3, NEW: 1}
    assert "    fatal: card2: not-as-expected while" in capsys.readouterr().out
    rollout.mend()
    capture = site.folder / "rollout.pcapng"
    with recorded(capture, ["lan0", "lan1"]):
        rollout.go_on(rest)
    assert rollout.kernels() == {NEW: 4}
    check_upgrades(site, capture, rest)
    show_exchange(site, capture, "card2")
    assert "firmware upgrade: success" in capsys.readouterr().out
    for wrong in (rest - {"card4"}, rest | {"card1"}):
        with pytest.raises(DemoError, match="firmware went to"):
            check_upgrades(site, capture, wrong)
    with pytest.raises(DemoError, match=r"changed were \[\] instead of"):
        rollout.go_on(rest)


def test_a_roll_out_that_does_not_stop_ends_the_tour(site: Site) -> None:
    for card in site.cards:
        card.inside.write("/etc/pnr/kernel", f"{NEW}\n")
    with pytest.raises(ProgramError, match="ended with 0 instead of 2"):
        Rollout(site).stop_at_broken_card()


def test_a_roll_out_that_stops_too_early_ends_the_tour(site: Site) -> None:
    site.cards[0].inside.fail("fwupgrade")
    with pytest.raises(DemoError, match="card2 was not reached: an earlier card has failed"):
        Rollout(site).stop_at_broken_card()


def test_a_roll_out_that_cannot_go_on_ends_the_tour(site: Site) -> None:
    site.cards[0].inside.fail("fwupgrade")
    with pytest.raises(ProgramError, match="ended with 2 instead of 0"):
        Rollout(site).go_on({"card1"})


def test_hosts_that_fared_alike_are_one_line() -> None:
    many = [f"ok: [card{number} -> localhost]" for number in range(10, 17)]
    lines = [
        *("PLAY [all] *****", "", "TASK [Install] ***", "changed: [card10 -> localhost]", "changed: [card9]"),
        'fatal: [card3 -> localhost]: FAILED! => {"changed": false, "msg": "card3: silent"}',
        'fatal: [card4]: FAILED! => {"changed": false}',
        *("TASK [Look] ***", *many, "PLAY RECAP ***", "card1 : ok=2"),
    ]
    assert folded(lines) == [
        *("PLAY [all]", "TASK [Install]", "fatal: card3: silent", "fatal: card4: no reason told"),
        "changed: card9, card10",
        *("TASK [Look]", "ok: 7 cards"),
    ]


def run(*command: str, **more: str) -> "subprocess.CompletedProcess[str]":
    """As from outside of every LAN."""
    environment = {name: value for name, value in os.environ.items() if name != "TARVEL_LAN"} | more
    return subprocess.run(command, cwd=ROOT, env=environment, capture_output=True, text=True, check=False)


def test_missing_programs_are_named_with_their_packages_before_anything_starts(tmp_path: Path) -> None:
    (tmp_path / "tshark").symlink_to("/bin/true")
    told = run(INTERPRETER, str(TOUR), PATH=str(tmp_path))
    assert (told.returncode, told.stdout) == (1, "")
    assert "prometheus-node-exporter (Debian package prometheus-node-exporter)" in told.stderr
    assert "ansible-playbook (Debian package ansible-core)" in told.stderr
    assert "tshark (" not in told.stderr


def test_what_is_no_daemon_is_named_before_anything_starts(tmp_path: Path) -> None:
    done = run(str(ROOT / "scripts/demo"), TARVELD=f"qemu-ppc {tmp_path}")
    assert (done.returncode, done.stdout) == (1, "")
    assert done.stderr == f'scripts/demo: TARVELD is "qemu-ppc {tmp_path}", which is no program\n'


@pytest.mark.parametrize("words", [["fleet", "--cards", "2"], ["fleets"], ["fleet", "--card"]])
def test_what_cannot_be_shown_is_a_usage_error(words: list[str]) -> None:
    told = run("scripts/demo", *words)
    assert (told.returncode, "usage: scripts/demo" in told.stderr) == (2, True), told


@pytest.mark.long
def test_the_whole_tour_with_fifty_cards(tmp_path: Path) -> None:
    """Its caller's folder is where the page comes to be."""
    page = tmp_path / "page.html"
    told = run("scripts/demo", "fleet", "--report", str(page))
    assert told.returncode == 0, told.stdout + told.stderr
    assert "{} => 50 @" in told.stdout
    assert f'{{version="{NEW}"}} => 50 @' in told.stdout
    assert "45 cards were sent firmware" in told.stdout
    assert "Fleet report: 50 cards" in page.read_text()
