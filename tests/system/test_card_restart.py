# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a restart of the simulated card's network does to those who talk to the card meanwhile."""

from support.daemon import words
from support.documents import ip_configuration
from support.peers import BROADCAST, TcpPeer, UdpPeer
from support.watch import Watch
from tarvelsim import Card
from tarvelsim.waiting import wait_for
from wire import Command, Status, request

RESTART = ["/etc/init.d/network", "restart"]
EMPTY_SET = request(Command.IP_SET, ip_configuration(), sequence=7)
NOBODY = request(Command.IP_GET, ip_configuration(), sequence=8)


def settings_of(card: Card, sequence: int) -> bytes:
    return request(Command.IP_GET, ip_configuration(to=card.name), sequence=sequence)


def is_down(card: Card, device: str) -> bool:
    return "UP" not in card.inside.run(["ip", "link", "show", device]).stdout.partition(">")[0].split("<")[1].split(",")


def restart_until_the_devices_are_down(card: Card) -> int:
    """They stay down until `netifd` is released; returns the mark to wait from then."""
    mark = card.network.mark()
    card.inside.hold("netifd")
    card.inside.run(RESTART)
    return mark


def test_restart_returns_with_success_before_the_devices_are_up_again(scratch_card: Card) -> None:
    mark = restart_until_the_devices_are_down(scratch_card)
    for device in ("eth0", "eth1"):
        assert is_down(scratch_card, device)
        assert scratch_card.addresses(device) == []
    scratch_card.inside.release()
    scratch_card.network.wait(mark)
    assert (scratch_card.address("eth0"), scratch_card.address("eth1")) == ("10.0.0.11", "10.0.1.11")


def test_datagram_to_a_card_whose_network_is_down_is_lost(scratch_card: Card, udp: UdpPeer) -> None:
    mark = restart_until_the_devices_are_down(scratch_card)
    udp.send(settings_of(scratch_card, sequence=1), to=BROADCAST)
    scratch_card.inside.release()
    scratch_card.network.wait(mark)
    assert udp.ask_until_answered(settings_of(scratch_card, sequence=2), to=BROADCAST).header.sequence == 2


def test_connection_lives_through_a_restart(scratch_card: Card, tcp: TcpPeer) -> None:
    mark = restart_until_the_devices_are_down(scratch_card)
    tcp.send(request(Command.VERSIONS))
    scratch_card.inside.release()
    scratch_card.network.wait(mark)
    assert tcp.receive().header.status == Status.SUCCESS


def test_datagram_from_before_is_read_after_it_and_cannot_be_answered(
    scratch_card: Card, udp: UdpPeer, watch: Watch
) -> None:
    """The daemon waits for the script, and the devices are still down when that has ended."""
    scratch_card.inside.hold("network")
    scratch_card.inside.hold("netifd")
    udp.ask(EMPTY_SET)
    scratch_card.records.wait_call("network", since=watch.calls_mark)
    udp.send(NOBODY)
    scratch_card.inside.release("network")
    scratch_card.records.wait_log(f"sendto() failed: {words('Network is unreachable')}", since=watch.since)
    scratch_card.inside.release()


def test_broken_configuration_does_not_fail_the_restart(scratch_card: Card) -> None:
    scratch_card.inside.write("/etc/config/network", "config interface 'x\n")
    assert scratch_card.inside.run(RESTART, check=False).returncode == 0


def answered_at_last(client: UdpPeer, card: Card) -> int:
    """Asks again and again, each time with another sequence number; returns that of the first question answered."""
    sequence = 100
    client.socket.settimeout(0.03)

    def is_answered() -> int | None:
        nonlocal sequence
        sequence += 1
        client.send(settings_of(card, sequence), to=BROADCAST)
        try:
            return client.receive().header.sequence
        except TimeoutError:
            return None

    return wait_for(is_answered, 20, lambda: "the card is never heard again")


def test_who_asks_all_through_a_real_restart_is_not_heard_at_first(unhurried_card: Card, unhurried_udp: UdpPeer) -> None:
    unhurried_udp.ask(request(Command.IP_SET, ip_configuration(to="unhurried")))
    wait_for(lambda: is_down(unhurried_card, "eth0"), 10, lambda: "the network is not restarted")
    assert answered_at_last(unhurried_udp, unhurried_card) > 101


def test_connection_lives_through_a_real_restart(unhurried_card: Card, unhurried_udp: UdpPeer) -> None:
    with TcpPeer(unhurried_card.address("eth0") or "") as peer:
        mark = unhurried_card.network.mark()
        unhurried_udp.ask(request(Command.IP_SET, ip_configuration(to="unhurried")))
        unhurried_card.network.wait(mark)
        assert peer.ask(request(Command.VERSIONS)).header.status == Status.SUCCESS
