# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which addresses the cards of a fleet have."""

from ipaddress import ip_address, ip_interface
from pathlib import Path

import pytest
from tarvelsim import SimError
from tarvelsim.plan import Place, Plan, Segment, places

THOUSAND = Plan.for_fleet(1000, 4)


def cards_of(plan: Plan) -> list[tuple[Segment, int]]:
    return [(segment, card) for segment in plan.all_segments() for card in range(1, plan.most_cards + 1)]


@pytest.mark.parametrize("cards", [1, 80, 89])
def test_a_lan_of_few_cards_has_the_addresses_of_the_worked_examples(cards: int) -> None:
    first, second = Plan.for_fleet(cards, 1).segments()
    assert (first.client_address, second.client_address, first.prefix) == ("10.0.0.1", "10.0.1.1", 24)
    assert [first.static_address(1), second.static_address(89)] == ["10.0.0.11", "10.0.1.99"]
    assert [first.leased_address(1), second.leased_address(89)] == ["10.0.0.101", "10.0.1.189"]
    assert (first.card_mac(1), second.card_mac(89)) == ("02:00:00:00:00:01", "02:00:00:00:01:59")


@pytest.mark.parametrize(("cards", "lans"), [(90, 1), (2, 2), (1000, 4), (500, 1)])
def test_a_fleet_has_large_lans(cards: int, lans: int) -> None:
    plan = Plan.for_fleet(cards, lans)
    assert (plan.lans, {segment.prefix for segment in plan.all_segments()}) == (lans, {22})
    assert lans * plan.most_cards >= cards


def test_each_network_of_a_fleet_holds_its_client_and_its_cards_and_nobody_else() -> None:
    networks = {ip_interface(f"{each.client_address}/{each.prefix}").network for each in THOUSAND.all_segments()}
    assert len(networks) == 8
    for segment, card in cards_of(THOUSAND):
        network = ip_interface(f"{segment.client_address}/{segment.prefix}").network
        for address in (segment.static_address(card), segment.leased_address(card)):
            assert ip_address(address) in network
            assert address not in (str(network.network_address), str(network.broadcast_address))
    assert not any(one.overlaps(other) for one in networks for other in networks if one != other)


@pytest.mark.parametrize("plan", [Plan(), THOUSAND], ids=["small", "large"])
def test_no_two_have_the_same_address_lease_hardware_address_or_port(plan: Plan) -> None:
    cards = cards_of(plan)
    addresses = [segment.client_address for segment in plan.all_segments()]
    addresses += [segment.static_address(card) for segment, card in cards]
    addresses += [segment.leased_address(card) for segment, card in cards]
    macs = [segment.card_mac(card) for segment, card in cards] + [each.client_mac for each in plan.all_segments()]
    ports = [segment.port(card) for segment, card in cards]
    for many in (addresses, macs, ports):
        assert len(set(many)) == len(many)
    assert max(map(len, ports)) <= 15, "the kernel takes no longer name"


def test_cards_fill_one_lan_after_the_other() -> None:
    assert places(5, 2) == [Place(0, 1), Place(0, 2), Place(0, 3), Place(1, 1), Place(1, 2)]
    thousand = places(1000, 4)
    assert (thousand[249], thousand[250], thousand[999]) == (Place(0, 250), Place(1, 1), Place(3, 250))


@pytest.mark.parametrize(("cards", "lans"), [(0, 1), (501, 1), (1001, 2), (1, 0), (1, 101)])
def test_more_than_there_are_addresses_for_are_refused(cards: int, lans: int) -> None:
    with pytest.raises(SimError, match="there can be 1 to"):
        Plan.for_fleet(cards, lans)


def test_a_plan_is_found_again_by_those_who_join_the_lan(tmp_path: Path) -> None:
    assert Plan.load(tmp_path) == Plan()
    THOUSAND.save(tmp_path)
    assert Plan.load(tmp_path) == THOUSAND
