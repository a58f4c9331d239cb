# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The simulated card leaves the machine it runs on alone."""

import subprocess
from pathlib import Path

import pytest
from tarvelsim import Card, Lan
from tarvelsim.binaries import sim_programs

PROGRAMS = ("/etc/init.d/network", "/lib/upgrade/fwupgrade", "/run/bin/uci")


@pytest.mark.parametrize("program", PROGRAMS)
def test_a_program_of_the_card_cannot_be_written_over_in_the_build(card: Card, program: str) -> None:
    """It is a link, and a shell's > follows it. Opened for appending, and with nothing appended."""
    assert card.inside.run(["sh", "-c", f": >> {program}"], check=False).returncode != 0


@pytest.mark.parametrize("program", ["gate", "uci"])
def test_what_runs_most_on_a_card_starts_without_looking_for_libraries(program: str) -> None:
    path = sim_programs()[program]
    segments = subprocess.run(["readelf", "-lW", path], stdout=subprocess.PIPE, text=True, check=True).stdout
    assert " INTERP " not in segments or b"__asan_init" in Path(path).read_bytes()


@pytest.mark.parametrize("names", [("card1", "other"), ("other", "card1")], ids=" ".join)
def test_card1_has_the_addresses_of_the_worked_examples_whoever_comes_first(tmp_path: Path, names: tuple[str, str]) -> None:
    lan = Lan(tmp_path)
    numbers = {name: lan.card(name).number for name in names}
    assert numbers == {"card1": 1, "other": 2}
