# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The packaged settings of the kernel. All cards share those of files with this machine, so they are only looked at."""

import pytest
import tarvelsim
from support.daemon import COMMAND, ROOT


@pytest.mark.parametrize("name", ["tarveld.sysctl", "tarveld.links"])
def test_the_kernel_of_a_card_has_each_setting(name: str) -> None:
    lines = (ROOT / "packaging/openwrt/files" / name).read_text(encoding="utf-8").splitlines()
    settings = dict(line.split("=") for line in lines if not line.startswith("#"))
    paths = ["/proc/sys/" + key.replace(".", "/") for key in settings]
    with tarvelsim.Lan.current().card("card1", command=COMMAND) as card:
        present = card.inside.run(["cat", *paths]).stdout.split()
    assert len(present) == len(settings) > 0
    assert all(value.isdigit() for value in [*settings.values(), *present])
