# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Which cards the inventory makes of what it reads and hears, without a process of Ansible's."""

from ansible_collections.tarvel.cards.plugins.module_utils.cards import Cards, escaped, of_file


def test_the_groups_file_tells_groups_and_addresses() -> None:
    groups, addresses = of_file("# none\ncard1 10.0.0.1 # one\n@b x y\n@a z\n@b w\n\n@empty\n")
    assert groups == ["b", "a", "empty"]
    assert addresses == {"card1": "10.0.0.1"}


def test_a_name_is_asked_for_as_it_is() -> None:
    assert escaped("a[1],b\\") == "a\\[1\\]\\,b\\\\"
    cards = Cards()
    cards.add(["card1", "10.0.0.9", "10.0.0.9:50003"], {})
    assert cards.names() == ["card1"]


def test_the_first_answer_of_a_name_counts() -> None:
    cards = Cards()
    cards.add(["card1"], {"card1": "10.0.0.9"})
    heard = [{"name": "card1", "target": f"10.0.{net}.1", "interface": f"lan{net}", "reachable": True} for net in (0, 1)]
    cards.hear(heard, unnamed=False)
    assert cards.hosts["card1"]["tarvel_address"] == "10.0.0.1"
    cards.hear([{"name": None, "target": "10.0.0.2", "interface": "lan0", "reachable": True}], unnamed=False)
    assert list(cards.hosts) == ["card1"]
