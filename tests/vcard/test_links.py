# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What another user of the card has put into /tmp, with and without the packaged settings of the kernel."""

from collections.abc import Iterator

import pytest
from asking import ask, ask_udp
from card import ROOT, VirtualCard
from support.archives import archive
from support.documents import ip_configuration
from support.peers import ConnectionEnded
from test_firmware import upload
from wire import Command, Status

SETTINGS = (ROOT / "packaging/openwrt/files/tarveld.links").read_text(encoding="utf-8")
NAMES = [line.split("=")[0] for line in SETTINGS.splitlines() if not line.startswith("#")]
# A kernel of 6.1 protects nothing by itself.
UNPROTECTED = "".join(f"{name}=0\n" for name in NAMES)

_ANOTHER_USER = 1000
_VICTIM = "/etc/victim"
_ELSEWHERE = "/etc/elsewhere"
_PRECIOUS = "precious"


@pytest.fixture(params=[False, True], ids=["unprotected", "protected"])
def protected(request: pytest.FixtureRequest, fresh_card: VirtualCard) -> Iterator[bool]:
    text = SETTINGS if request.param else UNPROTECTED
    fresh_card.run("; ".join(f"sysctl -w {line}" for line in text.splitlines() if not line.startswith("#")))
    yield request.param


def put_link(card: VirtualCard, path: str, target: str) -> None:
    card.run(f"rm -rf {path} && ln -s {target} {path} && chown -h {_ANOTHER_USER}:{_ANOTHER_USER} {path}")


def test_link_in_place_of_the_result_of_uci(fresh_card: VirtualCard, protected: bool) -> None:
    fresh_card.run(f"echo {_PRECIOUS} >{_VICTIM}")
    put_link(fresh_card, "/tmp/uci.tmp", _VICTIM)
    host = fresh_card.run("hostname")
    ask_udp("eth0", Command.IP_GET, ip_configuration(to=host))
    assert (fresh_card.run(f"cat {_VICTIM}") == _PRECIOUS) == protected


def test_link_in_place_of_the_directory_of_uploads(fresh_card: VirtualCard, protected: bool) -> None:
    fresh_card.run(f"mkdir {_ELSEWHERE}")
    put_link(fresh_card, "/tmp/upgrade", _ELSEWHERE)
    fresh_card.run(f"kill -9 {fresh_card.daemon_pid()}")
    if protected:
        fresh_card.wait_for_log("chdir() failed: Permission denied")
    else:
        fresh_card.wait_for(lambda: uploaded(archive({"file": b""})), "another daemon serves")
    assert (fresh_card.run(f"ls {_ELSEWHERE}") == "") == protected


def uploaded(content: bytes) -> bool:
    try:
        return upload(Command.UPLOAD, content) == Status.SUCCESS
    except (OSError, ConnectionEnded):
        return False
