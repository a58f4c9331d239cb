# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Simulated cards for experiments, and ways to look into them: scripts/card, tarvel-card where it is installed."""

import argparse
import os
import signal
import sys
from collections.abc import Sequence

from . import fleet, namespaces, running, troubles
from .card import Card
from .errors import SimError
from .lan import Lan
from .launch import run_in_lan
from .link import Link
from .options import FAST_DELAYS, REAL_DELAYS
from .places import CARD_PROGRAM
from .plan import Plan, places
from .troubles import Troubles

_DELAYS = {"fast": FAST_DELAYS, "real": REAL_DELAYS}
_FEW = 50  # cards that are told of one by one


def _tell(card: Card) -> None:
    addresses = ", ".join(f"{device} {address}" for device, address in card.planned_addresses().items())
    print(f"{card.name}: {addresses}\n  log: {card.records.log_path}", flush=True)


def _tell_of_lans(lan: Lan, cards: Sequence[Card]) -> None:
    for number in range(lan.plan.lans):
        there = [card for card in cards if card.place.lan == number]
        devices = " and ".join(segment.client_device for segment in lan.plan.segments(number))
        if there:
            print(f"{there[0].name} to {there[-1].name}: on {devices}, from {there[0].planned_addresses()['eth0']}")


def _troubles(seed: str | None, names: Sequence[str], lans: int) -> Troubles:
    """Printed, too: whoever looks for them may look them up."""
    if seed is None:
        return {}
    found = troubles.plan(seed, places(len(names), lans))
    print(f"Troubles of seed {seed}:")
    for line in troubles.description(found, names):
        print(f"  {line}", flush=True)
    return found


def _start_cards(options: argparse.Namespace) -> list[Card]:
    """Those that are switched on."""
    lan = Lan.current()
    names = _names(options)
    found = _troubles(options.troubles, names, lan.plan.lans)
    link = Link(options.loss, options.latency, options.rate)
    cards = fleet.switched_on(fleet.cards(lan, names, found, delays=_DELAYS[options.delays], link=link), found)
    for count, card in enumerate(fleet.start(cards), 1):
        if len(cards) <= _FEW:
            _tell(card)
        elif count % _FEW == 0:
            print(f"{count} of {len(cards)} cards run", file=sys.stderr)
    if len(cards) > _FEW:
        _tell_of_lans(lan, cards)
    return cards


def _names(options: argparse.Namespace) -> list[str]:
    return options.names or [f"card{number}" for number in range(1, options.cards + 1)]


def _run(options: argparse.Namespace) -> int:
    # Once more, but inside of the LAN's namespaces: what is still running there when this process ends, ends with them.
    if "TARVEL_LAN" not in os.environ:
        if options.lan is not None:
            running.require_unused(options.lan)
        return run_in_lan([namespaces.PYTHON, *sys.argv], Plan.for_fleet(len(_names(options)), options.lans))
    running.mark_as_bench(Lan.current().run_dir, options.lan or "")
    # Scripts end it that way, and a shell that starts it in the background has it ignore Ctrl-C.
    signal.signal(signal.SIGTERM, lambda *_: signal.raise_signal(signal.SIGINT))
    try:
        cards = _start_cards(options)
        which = f" --lan {options.lan}" if options.lan else ""
        look = f"{CARD_PROGRAM} shell{which} {cards[0].name}, {CARD_PROGRAM} client{which}"
        print(f"Try: {look}. Ctrl-C ends it all.", flush=True)
        signal.pause()
    except KeyboardInterrupt:
        print()
    return 0


# In place of this program, so that terminal, signals and exit status are the command's own.
def _exec(command: Sequence[str]) -> int:
    sys.stdout.flush()
    os.execvp(command[0], list(command))


def _shell(options: argparse.Namespace) -> int:
    lan, card = running.find_card(options.name, options.lan)
    return _exec(lan.enter_card(card, options.command or running.shell(f"{card.name}:\\w# ")))


def _client(options: argparse.Namespace) -> int:
    there = ["env", "-C", os.getcwd(), *(options.command or running.shell("client:\\w# "))]
    return _exec(running.the_lan(options.lan).enter(there))


def _log(options: argparse.Namespace) -> int:
    _, card = running.find_card(options.name, options.lan)
    return _exec(["tail", "-n", "+1", *(["-f"] if options.follow else []), str(card.directory / "log")])


def _list(options: argparse.Namespace) -> int:
    for lan in running.running_lans() if options.lan is None else running.lans_to_look_into(options.lan):
        print(f"LAN {lan.name}:")
        for card in lan.cards():
            addresses = ", ".join(f"{device} {address}" for device, address in card.addresses.items())
            print(f"{card.name}: {addresses} at the factory\n  directory: {card.directory}")
    return 0


def _declare_link(run: argparse.ArgumentParser) -> None:
    needs = "each way on all cards' cables; needs tc, and netem in the kernel"
    run.add_argument("--loss", type=float, default=0, metavar="PERCENT", help=f"packets that are lost, {needs}")
    run.add_argument("--latency", type=float, default=0, metavar="MS", help=f"milliseconds of delay, {needs}")
    run.add_argument("--rate", type=float, default=0, metavar="KBIT", help=f"kilobits a second, {needs}")


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog=CARD_PROGRAM, description="Simulated cards for experiments, and ways to look into them.")
    verbs = parser.add_subparsers(required=True, metavar="COMMAND")

    run = verbs.add_parser("run", help="start cards on a LAN and keep them until Ctrl-C")
    run.add_argument("--cards", type=int, default=1, metavar="N", help="how many, if no name is given")
    run.add_argument("--lans", type=int, default=1, metavar="N", help="share the cards out over so many LANs")
    run.add_argument(
        "--delays", choices=_DELAYS, default="fast", help="whether restarts and the like take as long as on a real card"
    )
    run.add_argument(
        "--troubles",
        metavar="SEED",
        help="some cards are off, without a daemon, slow, mis-addressed, or share a name or addresses; the seed says which",
    )
    _declare_link(run)
    run.add_argument("names", nargs="*", metavar="NAME", help="host names of the cards")
    run.set_defaults(act=_run)

    shell = verbs.add_parser("shell", help="open a shell on a running card, or run a command there")
    shell.add_argument("name", metavar="NAME")
    shell.set_defaults(act=_shell)

    client = verbs.add_parser("client", help="open a shell on the client side, or run a command there")
    client.set_defaults(act=_client)

    log = verbs.add_parser("log", help="print a card's log")
    log.add_argument("-f", "--follow", action="store_true", help="go on printing")
    log.add_argument("name", metavar="NAME")
    log.set_defaults(act=_log)

    listing = verbs.add_parser("list", help="say which cards are running")
    listing.set_defaults(act=_list)
    run.add_argument("--lan", metavar="NAME", help="what the LAN is called, where several run")
    for verb in (shell, client, log, listing):
        verb.add_argument("--lan", metavar="NAME", help="the LAN that is meant, where several run")
    for verb in (shell, client):
        verb.add_argument("command", nargs="*", default=[], metavar="-- COMMAND", help="instead of a shell")
    return parser


def main() -> int:
    os.environ["PATH"] = namespaces.with_system_path(os.environ.get("PATH", ""))
    options = _parser().parse_args()
    try:
        status: int = options.act(options)
        return status
    except (SimError, OSError) as error:
        print(f"{CARD_PROGRAM}: {error}", file=sys.stderr)
        return 1
