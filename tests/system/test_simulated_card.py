# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card leaves the machine it runs on alone."""

import pytest
from tarvelsim import Card

PROGRAMS = ("/etc/init.d/network", "/lib/upgrade/fwupgrade", "/run/bin/uci")


@pytest.mark.parametrize("program", PROGRAMS)
def test_a_program_of_the_card_cannot_be_written_over_in_the_build(card: Card, program: str) -> None:
    """It is a link, and a shell's > follows it. Opened for appending, and with nothing appended."""
    assert card.inside.run(["sh", "-c", f": >> {program}"], check=False).returncode != 0
