# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the model makes of commands that it has no words of its own for."""

import copy

import pytest
from model import Card, Unforeseeable, platform, serve_connection, tcp
from model.settings import Settings
from wire import Status, golden, reply_to, request

_NEW = 0x7123


def _answer(sent: bytes) -> bytes:
    return serve_connection(Card("card1", Settings({}), {}), "10.0.0.1", 40000, sent).answered


@pytest.mark.parametrize("text", ["<Uptime/>", None])
def test_command_of_the_page_is_answered_as_in_its_example(monkeypatch: pytest.MonkeyPatch, text: str | None) -> None:
    shown = golden.Exchange("uptime", request(_NEW), request(reply_to(_NEW), text, status=Status.SUCCESS))
    monkeypatch.setitem(tcp.EXAMPLES, _NEW, shown)
    answer = _answer(request(_NEW, sequence=7) + request(_NEW, sequence=8))
    assert answer == b"".join(request(reply_to(_NEW), text, status=Status.SUCCESS, sequence=n) for n in (7, 8))


@pytest.mark.parametrize("command", [_NEW, 3, 4, 9])
def test_command_that_the_page_has_not_over_tcp_is_unknown(command: int) -> None:
    assert _answer(request(command)) == request(reply_to(command), status=Status.UNKNOWN_COMMAND)


@pytest.mark.parametrize("server", ["ntp.examp>le.org", "a&", "a;b", "$(a)", "a > b"])
def test_what_a_shell_would_make_of_a_value_is_not_foreseen(server: str) -> None:
    with pytest.raises(Unforeseeable):
        platform.run(Card("card1", Settings({}), {}), f"uci -q set system.ntp.server={server}")


@pytest.mark.parametrize("command", ["uci -q get system.ntp.server > /tmp/uci.tmp", "uci -q commit system"])
def test_what_the_daemon_itself_asks_of_a_shell_is_foreseen(command: str) -> None:
    platform.run(Card("card1", Settings({}), {}), command)


def test_what_happens_to_a_copy_of_a_card_does_not_happen_to_the_card() -> None:
    card = Card("card1", Settings({"network.lan.proto": "static"}), {"/etc/pnr/kernel": b"1"}, {"a": b"1"})
    before = copy.deepcopy(card)
    other = card.copy()
    assert other == card
    other.settings.put("network.lan.proto", "dhcp")
    other.settings.commit()
    other.settings.delete("network.lan.proto")
    other.refuses("fork")
    for record in (value for value in vars(other).values() if isinstance(value, (dict, list))):
        record.clear()
    assert card == before
