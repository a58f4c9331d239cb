# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which card of a fleet has which trouble."""

from collections import Counter

import pytest
from tarvelsim import Link, SimError
from tarvelsim.plan import places
from tarvelsim.troubles import Kind, Trouble, Troubles, description, misplaced_addresses, options_of, plan

SEEDS = [str(number) for number in range(30)]
THOUSAND = places(1000, 4)


def kinds(troubles: Troubles) -> Counter[Kind]:
    return Counter(trouble.kind for trouble in troubles.values())


def names_of(card: int) -> str:
    return f"card{card + 1}"


def addresses_of(card: int) -> dict[str, str]:
    return {"eth0": f"10.0.0.{card}", "eth1": f"10.0.1.{card}"}


def test_a_seed_means_the_same_for_ever() -> None:
    """Written down once: whoever has noted a seed finds the same troubles with another edition."""
    assert plan("7", places(10, 1)) == PLAN_OF_SEVEN


def test_same_seed_same_plan() -> None:
    assert plan("spring", THOUSAND) == plan("spring", THOUSAND)


def test_another_seed_makes_another_plan() -> None:
    assert len({tuple(plan(seed, THOUSAND)) for seed in SEEDS}) == len(SEEDS)


@pytest.mark.parametrize("seed", SEEDS)
@pytest.mark.parametrize(("cards", "lans"), [(10, 1), (11, 2), (40, 4)])
def test_every_kind_is_there_from_ten_cards_on(seed: str, cards: int, lans: int) -> None:
    assert set(kinds(plan(seed, places(cards, lans))).values()) == {1}
    assert set(kinds(plan(seed, places(cards, lans)))) == set(Kind)


@pytest.mark.parametrize("cards", range(1, 10))
def test_of_few_cards_at_least_half_are_well(cards: int) -> None:
    for seed in SEEDS:
        assert len(plan(seed, places(cards, 1))) == cards // 2


@pytest.mark.parametrize("cards", [100, 1000])
def test_each_kind_is_three_of_a_hundred(cards: int) -> None:
    assert kinds(plan("1", places(cards, 4))) == {kind: 3 * cards // 100 for kind in Kind}


@pytest.mark.parametrize("seed", SEEDS)
def test_the_other_of_two_has_no_trouble_of_its_own_and_is_nobody_elses_other(seed: str) -> None:
    troubles = plan(seed, THOUSAND)
    others = [trouble.other for trouble in troubles.values() if trouble.other is not None]
    assert len(others) == len(set(others)) == 2 * 30
    assert not set(others) & set(troubles)


@pytest.mark.parametrize("seed", SEEDS)
def test_two_with_the_same_addresses_are_on_one_lan(seed: str) -> None:
    for card, trouble in plan(seed, THOUSAND).items():
        if trouble.kind is Kind.SAME_ADDRESS:
            assert trouble.other is not None
            assert THOUSAND[card].lan == THOUSAND[trouble.other].lan


def test_lans_of_one_card_each_have_no_doubled_address() -> None:
    assert set(kinds(plan("1", places(12, 12)))) == set(Kind) - {Kind.SAME_ADDRESS}


def test_each_kind_is_made_by_an_option_of_the_card() -> None:
    doubled = (Kind.SAME_ADDRESS, Kind.SAME_NAME)
    troubles = {kind: {0: Trouble(kind, 4 if kind in doubled else None)} for kind in Kind}
    made = {kind: options_of(0, troubles[kind], names_of, addresses_of) for kind in Kind}
    assert made == {
        Kind.SAME_ADDRESS: {"static": addresses_of(4)},
        Kind.SAME_NAME: {"hostname": "card5"},
        Kind.OFF: {},
        Kind.NO_DAEMON: {"autostart": False},
        Kind.SLOW: {"standstill": 1.5},
        Kind.MISADDRESSED: {"static": {"eth0": "172.16.0.10", "eth1": "172.17.0.10"}},
    }
    assert options_of(1, {0: Trouble(Kind.SLOW)}, names_of, addresses_of) == {}


def test_addresses_outside_are_those_of_one_card_each() -> None:
    addresses = [address for card in range(50000) for address in misplaced_addresses(card).values()]
    assert len(set(addresses)) == len(addresses)
    assert {address.rsplit(".", 2)[0] for address in addresses} == {"172.16", "172.17"}


def test_the_description_names_each_card_and_the_other_of_two() -> None:
    troubles = {0: Trouble(Kind.OFF), 2: Trouble(Kind.SAME_NAME, 1), 3: Trouble(Kind.OFF)}
    assert description(troubles, ["card1", "card2", "card3", "card4"]) == [
        "with the name of another: card3 (that of card2)",
        "switched off: card1, card4",
    ]


@pytest.mark.parametrize("words", [{"loss": -1}, {"loss": 101}, {"latency": -1}, {"rate": -1}])
def test_a_cable_that_cannot_be_is_refused(words: dict[str, float]) -> None:
    with pytest.raises(SimError, match="a cable loses 0 to 100 percent"):
        Link(**words)


PLAN_OF_SEVEN: Troubles = {
    1: Trouble(Kind.OFF),
    2: Trouble(Kind.SAME_NAME, 7),
    3: Trouble(Kind.NO_DAEMON),
    5: Trouble(Kind.MISADDRESSED),
    6: Trouble(Kind.SLOW),
    9: Trouble(Kind.SAME_ADDRESS, 8),
}
