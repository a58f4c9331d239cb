# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What people do with many cards: find them, report and watch them, roll firmware out, look at the traffic."""

import argparse
import os
import sys
from pathlib import Path

import paths
import needs
from commands import DemoError
from listing import discover, report
from monitoring import monitored
from narrator import chapter, say
from programs import ProgramError
from recording import recorded
from rollout import Rollout
from sites import Site, running_site
from tarvelsim import Lan, SimError, namespaces
from tarvelsim.launch import run_in_lan
from tarvelsim.plan import Plan
from traffic import check_upgrades, show_exchange

_FEWEST = 3  # one is well, one is broken, and one is left


def tour(site: Site, page: Path) -> None:
    discover(site)
    report(site, page)
    chapter("All of them in Prometheus")
    with monitored(site) as monitoring:
        monitoring.poll()
        monitoring.expect_up(len(site.cards))
        rollout = Rollout(site)
        monitoring.expect_kernels(rollout.kernels())

        chapter("New firmware in waves, with Ansible")
        rest = rollout.stop_at_broken_card()
        say("So Prometheus has it, too:")
        monitoring.poll()
        monitoring.expect_kernels(rollout.kernels())

        chapter("The card is mended, and the roll-out goes on")
        capture = site.folder / "rollout.pcapng"
        rollout.mend()
        with recorded(capture, [segment.client_device for segment in site.lan.plan.all_segments()]):
            rollout.go_on(rest)
        monitoring.poll()
        monitoring.expect_kernels(rollout.kernels())
    chapter("The traffic of that, in tshark")
    show_exchange(site, capture, site.cards[1].name)
    check_upgrades(site, capture, rest)


def _parsed() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="scripts/demo fleet", description=__doc__)
    parser.add_argument("--cards", type=int, default=50, metavar="N", help=f"how many, {_FEWEST} at least (50)")
    page = paths.BUILD / "fleet.html"
    parser.add_argument("--report", type=Path, default=page, metavar="FILE", help="where the report is written (build/fleet.html)")
    parser.add_argument("--only-check", action="store_true", help="end here if no program is missing")
    arguments = parser.parse_args()
    if arguments.cards < _FEWEST:
        parser.error(f"it takes {_FEWEST} cards to show this")
    return arguments


def _run(arguments: argparse.Namespace) -> int:
    # Once more, but inside of the LAN: all that was started ends with it.
    if "TARVEL_LAN" not in os.environ:
        absent = needs.missing()
        if absent:
            raise DemoError(f"There are programs missing: {', '.join(absent)}.")
        if arguments.only_check:
            return 0
        return run_in_lan([namespaces.PYTHON, *sys.argv], Plan.for_fleet(arguments.cards, lans=1))
    chapter(f"A site with {arguments.cards} simulated cards")
    with running_site(arguments.cards, Lan.current().run_dir / "operator") as site:
        say("They run, on two networks. What is slow on a real card, such as a restart of its network, is fast here.")
        tour(site, arguments.report.absolute())
    chapter(f"Done. The cards are gone, and nothing is left but {arguments.report}.")
    return 0


def main() -> int:
    try:
        return _run(_parsed())
    except (DemoError, ProgramError, SimError, OSError) as error:
        print(f"\n{error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130


if __name__ == "__main__":
    sys.exit(main())
