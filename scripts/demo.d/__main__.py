# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What an operator does with a card, from the first question to a reboot. Runs inside a simulated LAN."""

import os
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "sim"))

import tarvelsim  # noqa: E402

from card_log import shortened  # noqa: E402
from client import Client  # noqa: E402
from commands import DemoError, check  # noqa: E402
from firmware import pack_firmware  # noqa: E402
from narrator import chapter, say, show  # noqa: E402

NEW_ADDRESS = "10.0.0.50"
NEW_SERVER = "10.0.0.5"
NEW_VERSIONS = {"kernel": "KERN-6.2.0", "application": "APPL-2.6.0"}


def show_versions(client: Client) -> None:
    chapter("What runs on the card?")
    client.versions()


def set_time(client: Client, card: tarvelsim.Card) -> None:
    chapter("Which clock does it follow?")
    client.time()
    say("Set the clock by hand. The kernel refuses that here, as it must: a simulated card never moves the clock of")
    say("the machine it runs on. The client is told, and the card logs why:")
    mark = card.records.log_mark()
    client.set_manual("2021-03-04T05:06:07")
    show([str(card.records.wait_log("clock_settime() FAILED", since=mark))])

    say(f"Let it follow the NTP server {NEW_SERVER}.")
    client.set_ntp(NEW_SERVER)
    client.time()
    check(card.inside.uci("get", "system.ntp.server") == NEW_SERVER, "the card did not take the new NTP server")
    check(card.inside.exists("/etc/rc.d/S65ntpd"), "NTP is not enabled on the card")


def set_ip(client: Client, card: tarvelsim.Card) -> None:
    chapter("Move it to another address")
    client.ip()
    say(f"Give its first interface the address {NEW_ADDRESS}. The request and its reply are broadcasts. What is staged")
    say("on the card is committed along, the NTP server too.")
    client.set_ip("VemkEth1", f"{NEW_ADDRESS}/24")
    card.wait_address("eth0", NEW_ADDRESS)
    client.ip()


def upgrade(client: Client, card: tarvelsim.Card, directory: Path) -> None:
    chapter("New firmware")
    archive = pack_firmware(directory, NEW_VERSIONS)
    say(f"{archive.name} holds a new kernel and a new application ({archive.stat().st_size} bytes).")
    say("The card answers when the archive is unpacked, and then installs it; how that went, its versions tell.")
    client.upgrade(archive)
    client.versions()
    for component, version in NEW_VERSIONS.items():
        check(card.inside.read(f"/etc/pnr/{component}").strip() == version, f"{component} was not upgraded")


def reboot(client: Client, card: tarvelsim.Card) -> None:
    chapter("Reboot")
    say("It goes down two seconds after its answer.")
    client.reboot()
    card.wait_boot(2)
    say(f"It is back, with what was set: eth0 is {card.address('eth0')}.")
    check(card.address("eth0") == NEW_ADDRESS, "the card has lost its address")
    client.versions()
    client.time()


def show_log(card: tarvelsim.Card) -> None:
    chapter("What the card logged")
    show(list(shortened(str(line) for line in card.records.log_lines(ident=None))))


def tour() -> None:
    lan = tarvelsim.Lan.current()
    chapter("A simulated card starts")
    with lan.card("card1", delays=tarvelsim.REAL_DELAYS) as card:
        say("Whatever takes a while on a real card takes as long on this one: a restart of the network, say, a second.")
        say(f"card1 serves on {card.address('eth0')} (eth0) and {card.address('eth1')} (eth1).")
        client = Client(os.environ["TARVELCTL"], card.name)
        show_versions(client)
        set_time(client, card)
        set_ip(client, card)
        upgrade(client, card, lan.run_dir)
        reboot(client, card)
        show_log(card)
    chapter("Done. The card is gone, and nothing is left of it.")


def main() -> int:
    try:
        tour()
    except (DemoError, tarvelsim.SimError, OSError) as error:
        print(f"\n{error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 130
    return 0


if __name__ == "__main__":
    sys.exit(main())
