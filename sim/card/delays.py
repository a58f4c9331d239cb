# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How long the platform takes for what it does, in seconds of a real card.

Each card multiplies them by a factor of its own: their order and what happens meanwhile never change, their length may.
What a caller asks for, as in `reboot -d 2`, and how long somebody is waited for at most, are no delays.
"""

import time

from settings import DIRECTORY, Settings

NETWORK_DOWN = 1.0  # between the end of the old network daemon and the start of the new one
NETWORK_SETUP = 0.05  # from its start to the addresses
LEASE = 3.0  # until a DHCP server has answered, and between two attempts when none does
NTPDATE_TIMEOUT = 2.0  # for each server that does not answer
RESPAWN = 5.0
SHUTDOWN = 0.2  # from the signal to the first stop script
LAST_WISH = 1.0  # between asking all processes to end and ending them


def of_this_card(settings: Settings, seconds: float) -> float:
    """What a real card's delay lasts here; it is written down, so that nobody needs a clock to know of it."""
    scaled = seconds * settings.delays
    with (DIRECTORY / "delays").open("a", encoding="ascii") as written:
        written.write(f"{scaled:g}\n")
    return scaled


def pause(settings: Settings, seconds: float) -> None:
    time.sleep(of_this_card(settings, seconds))


def publish(settings: Settings) -> None:
    """For the stand-in that is a shell script."""
    (DIRECTORY / "ntpdate-timeout").write_text(f"{NTPDATE_TIMEOUT * settings.delays}\n")
