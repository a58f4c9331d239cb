# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The reboot of a card."""

import pytest
from support.daemon import words
from support.documents import envelope, reboot_card
from support.peers import BROADCAST, UdpPeer
from support.tracing import Tracer
from support.watch import Watch
from tarvelsim import Card, Lan
from wire import Command, Header, Status, request

QUESTION = request(Command.REBOOT, reboot_card(), sequence=12)
WARNING = "info ***** WARNING: Card will reboot in a few seconds *****"
REBOOT = "reboot -d 2 &"


def test_reboot_has_been_started_when_the_answer_comes(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.hold("reboot")
    answer = udp.ask(QUESTION)
    assert watch.commands() == [REBOOT]
    assert answer.header == Header(command=0x8009, status=Status.SUCCESS, sequence=12)
    assert answer.destination == BROADCAST


def test_reboot_is_announced_in_the_log(scratch_card: Card, udp: UdpPeer, watch: Watch) -> None:
    scratch_card.inside.hold("reboot")
    udp.ask(QUESTION)
    assert watch.log() == [udp.logged(len(QUESTION)), WARNING]


def test_card_comes_back(lan: Lan, scratch_card: Card, udp1: UdpPeer) -> None:
    scratch_card.inside.write("/tmp/upgrade/leftover", "")
    udp1.ask(QUESTION)
    scratch_card.wait_boot(2)
    assert not scratch_card.inside.exists("/tmp/upgrade/leftover")
    assert udp1.ask(request(0x42)).header.status == Status.UNKNOWN_COMMAND


@pytest.mark.parametrize("root", ["IpConfiguration", "RebootCard", "RebootCardNow"])
def test_either_root_reboots(scratch_card: Card, udp: UdpPeer, watch: Watch, root: str) -> None:
    scratch_card.inside.hold("reboot")
    assert udp.ask(request(Command.REBOOT, envelope(root, "<Anything/>"))).header.status == Status.SUCCESS
    assert watch.commands() == [REBOOT]


def test_request_for_another_card_does_not_reboot(card: Card, udp: UdpPeer, watch: Watch) -> None:
    question = request(Command.REBOOT, reboot_card(to="card7"))
    assert udp.is_ignored(question, to=BROADCAST)
    assert watch.log()[:2] == [
        udp.logged(len(question)),
        'info Message is for "card7" not for me "card1", drop it',
    ]
    assert watch.commands() == []


def test_reboot_that_fails_later_has_been_answered_with_success(
    scratch_card: Card, udp: UdpPeer, watch: Watch
) -> None:
    scratch_card.inside.fail("reboot")
    assert udp.ask(QUESTION).header.status == Status.SUCCESS
    assert not watch.logged("warning reboot command failed")


def test_only_the_named_card_of_two_reboots(lan: Lan, scratch_card: Card, udp: UdpPeer, daemon: list[str]) -> None:
    with lan.card("card2", command=daemon) as other:
        for card in (scratch_card, other):
            card.inside.hold("reboot")
        marks = scratch_card.records.log_mark(), other.records.log_mark()
        answer = udp.ask(request(Command.REBOOT, reboot_card(to="card2")), to=BROADCAST)
        assert answer.header.status == Status.SUCCESS
        other.records.wait_log("Card will reboot", since=marks[1])
        scratch_card.records.wait_log('Message is for "card2" not for me "card1"', since=marks[0])
        assert not any(REBOOT in command for command in scratch_card.records.commands())


def test_answer_of_one_card_is_dropped_by_the_other(
    lan: Lan, card: Card, udp: UdpPeer, watch: Watch, daemon: list[str]
) -> None:
    with lan.card("card2", command=daemon):
        reply = Header(command=0x8003, message_format=0, status=1)
        udp.send(reply.encode(), to=BROADCAST)
        assert watch.log()[-1] == "info Got a response from another card, drop it"


# The host name has taken two shells when the daemon serves.
NO_PROCESS = ["clone3:error=EAGAIN:when=3+", "clone:error=EAGAIN:when=3+", "vfork:error=EAGAIN:when=3+"]
NO_RESULT = ["wait4:error=ECHILD:when=3+"]


@pytest.mark.needs_native
@pytest.mark.parametrize("faults", [NO_PROCESS, NO_RESULT], ids=["no process", "no result"])
def test_shell_that_cannot_be_run_is_a_failure(
    scratch_card: Card, tracer: Tracer, udp: UdpPeer, faults: list[str]
) -> None:
    scratch_card.inside.hold("reboot")
    tracer.inject(*faults)
    mark = scratch_card.records.log_mark()
    answer = udp.ask(QUESTION)
    scratch_card.records.wait_log("reboot command failed", since=mark, level="warning")
    assert (answer.header, answer.destination) == (Header(command=0x8009, status=2, sequence=12), BROADCAST)


@pytest.mark.needs_native
def test_shell_without_a_result_is_told_on_standard_error(scratch_card: Card, tracer: Tracer, udp: UdpPeer) -> None:
    scratch_card.inside.hold("reboot")
    tracer.inject(*NO_RESULT)
    udp.ask(QUESTION)
    scratch_card.records.wait_console(f"system() FAILED: {words('No child processes')}\n")
