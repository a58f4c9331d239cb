# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""tarvelctl time"""

import pytest
from support.ctl import Ctl, interrupt
from support.fake_card import FakeTcpCard, answer
from tarvelsim import REAL_DELAYS, Card, Lan
from wire import Message, text_payload
from wire.numbers import Command, Format


def test_the_time_reference_is_shown_with_its_skew(ctl: Ctl, rack: list[Card]) -> None:
    result = ctl.json("time", "get", "rack1").result
    assert (result["mode"], result["server"]) == ("Manual", "10.0.0.1")
    assert result["skew_error"] >= 0.5  # a card tells whole seconds
    assert abs(result["skew"]) < 5  # both clocks are the host's


def test_a_missing_setting_is_explained(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["uci", "delete", "system.ntp.server"])
    answer = ctl("time", "get", "rack1")
    assert answer.code == 3
    assert "system.ntp.server is missing" in answer.err


def test_a_server_is_set_and_read_back(ctl: Ctl, scratch: Card) -> None:
    answer = ctl.json("time", "set", "--ntp", "10.0.0.9", "rack1")
    assert answer.code == 0
    assert (answer.result["mode"], answer.result["server"]) == ("Ntp", "10.0.0.9")
    assert scratch.inside.uci("get", "system.ntp.server") == "10.0.0.9"


def test_a_card_that_asks_its_time_servers_in_vain_is_waited_for(ctl: Ctl, lan: Lan, daemon: list[str]) -> None:
    with lan.card("unhurried", command=daemon, delays=REAL_DELAYS):
        assert ctl("time", "set", "--ntp", "10.0.0.9", "unhurried").code == 0


def test_it_says_that_the_server_is_only_staged(ctl: Ctl, scratch: Card) -> None:
    answer = ctl.json("time", "set", "--ntp", "10.0.0.9", "rack1")
    assert "staged, not committed" in answer.result["hint"]


def test_the_same_server_is_nothing_to_do(ctl: Ctl, scratch: Card) -> None:
    assert ctl("time", "set", "--ntp", "10.0.0.9", "rack1").code == 0
    answer = ctl.json("time", "set", "--ntp", "10.0.0.9", "rack1")
    assert (answer.code, answer.result["changed"]) == (0, False)


def test_an_empty_server_is_refused_before_anything_is_sent(ctl: Ctl, rack: list[Card]) -> None:
    mark = rack[0].records.log_mark()
    answer = ctl("time", "set", "--ntp", "", rack[0].address("eth0") or "")
    assert answer.code == 2
    assert rack[0].records.log_lines(mark) == []


def test_a_server_for_the_shell_is_refused(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("time", "set", "--ntp", "10.0.0.9;reboot", "rack1").code == 2


def test_a_manual_time_sends_the_cards_server_back(ctl: Ctl, scratch: Card) -> None:
    answer = ctl("time", "set", "--manual", "2026-03-04T05:06:07Z", "rack1")
    assert answer.code == 3  # the kernel lets no simulated card move the clock
    assert "Setting unix time to 1772600767" in [line.text for line in scratch.records.log_lines()]
    assert scratch.inside.uci("get", "system.ntp.server") == "10.0.0.1"


def test_the_words_for_no_server_are_sent_back_as_none(ctl: Ctl) -> None:
    none = '<TimeReferenceConfiguration Mode="Ntp" NtpServer="NOT CONFIGURED" DateTime="2026-03-04T05:06:07"/>'

    def respond(request: Message) -> bytes:
        is_get = request.header.command == Command.TIME_GET
        return answer(request, text_payload(none), Format.SECTION_8) if is_get else answer(request)

    with FakeTcpCard(respond) as card:
        ctl("time", "set", "--manual", "now", card.address)
    assert 'NtpServer=""' in card.requests[1].text


def test_a_server_that_the_shell_would_interpret_is_not_sent_back(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["uci", "set", "system.ntp.server=10.0.0.1;reboot"])
    mark = scratch.records.calls_mark()
    answer = ctl.json("time", "set", "--manual", "now", "rack1")
    assert answer.code == 2
    assert [call[0] for call in scratch.records.calls(since=mark) if call[0] == "ntpd"] == []


def test_a_time_after_2038_is_refused(ctl: Ctl, rack: list[Card]) -> None:
    assert ctl("time", "set", "--manual", "2038-01-19T03:14:08Z", "rack1").code == 2


def test_a_dry_run_changes_nothing(ctl: Ctl, rack: list[Card]) -> None:
    result = ctl.json("--dry-run", "time", "set", "--ntp", "10.0.0.9", "rack1").result
    assert 'NtpServer="10.0.0.9"' in result["xml"]
    assert rack[0].inside.uci("get", "system.ntp.server") == "10.0.0.1"


def test_a_time_is_not_set_where_none_can_be_read(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.run(["uci", "delete", "system.ntp.server"])
    mark = scratch.records.calls_mark()
    assert ctl("time", "set", "--ntp", "10.0.0.9", "rack1").code == 3
    assert not [call for call in scratch.records.calls("uci", since=mark) if "set" in call]


@pytest.mark.parametrize("server", ["x" * 99, "two\tnames"])
def test_a_server_that_cannot_be_sent_back_keeps_the_time_as_it_is(ctl: Ctl, scratch: Card, server: str) -> None:
    scratch.inside.run(["uci", "set", f"system.ntp.server={server}"])
    mark = scratch.records.log_mark()
    assert ctl("time", "set", "--manual", "now", "rack1").code == 2
    assert "Setting manual time reference" not in [line.text for line in scratch.records.log_lines(mark)]


def test_an_interrupted_setting_says_what_may_be(ctl: Ctl, scratch: Card) -> None:
    scratch.inside.hold("ntpd")
    mark = scratch.records.calls_mark()
    running = ctl.start("-o", "json", "time", "set", "--ntp", "10.0.0.9", "rack1")
    scratch.records.wait_call("ntpd", since=mark)
    answer = interrupt(running)
    scratch.inside.release()
    assert answer.code == 130
    assert "may have the new time reference" in answer.result["hint"]
    assert answer.result["changed"] is None
