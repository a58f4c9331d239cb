# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The inventory as ansible-inventory reads it."""

import json
from collections.abc import Iterator
from pathlib import Path
from typing import Any

import pytest
import tarvelsim
from playing import Ansible
from simulated import numbered

GROUPS = """# the site
card1      10.0.0.11
elsewhere  10.9.0.1
@rack-1    card[1-2] @spare   # and one
@spare     silent 10.0.0.250
"""


@pytest.fixture(scope="module")
def cards() -> Iterator[list[tarvelsim.Card]]:
    with numbered(3) as cards:
        yield cards


@pytest.fixture
def ansible(tmp_path: Path) -> Ansible:
    ansible = Ansible(tmp_path)
    ansible.groups.write_text(GROUPS)
    return ansible


def written(ansible: Ansible, **options: Any) -> str:
    """Only on one network: there each card answers once."""
    path = ansible.folder / "site.cards.yml"
    defaults = {"plugin": "tarvel.cards.discover", "groups_file": "groups", "interfaces": ["lan0"]}
    path.write_text(json.dumps({**defaults, **options}))
    return str(path)


def listed(ansible: Ansible, path: str, extra: dict[str, str] | None = None) -> dict[str, Any]:
    inventory: dict[str, Any] = json.loads(ansible.run("ansible-inventory", "-i", path, "--list", extra=extra))
    return inventory


def variables_of(inventory: dict[str, Any], host: str) -> dict[str, Any]:
    variables: dict[str, Any] = inventory["_meta"]["hostvars"][host]
    return variables


def test_names_are_hosts_and_groups_are_groups(ansible: Ansible, cards: list[tarvelsim.Card]) -> None:
    path = written(
        ansible,
        names=["card3"],
        via="site1",
        compose={"ansible_host": "tarvel_address"},
        groups={"silent_ones": "not tarvel_heard"},
        keyed_groups=[{"prefix": "on", "key": "tarvel_interface"}],
    )
    inventory = listed(ansible, path)
    assert sorted(inventory["rack_1"]["hosts"]) == ["10.0.0.250", "card1", "card2", "silent"]
    assert sorted(inventory["spare"]["hosts"]) == ["10.0.0.250", "silent"]
    assert sorted(inventory["silent_ones"]["hosts"]) == ["10.0.0.250", "elsewhere", "silent"]
    assert sorted(inventory["on_lan0"]["hosts"]) == ["card1", "card2", "card3"]
    assert variables_of(inventory, "card3") == {
        "ansible_host": "10.0.0.13",
        "tarvel_address": "10.0.0.13",
        "tarvel_heard": True,
        "tarvel_interface": "lan0",
        "tarvel_name": "card3",
        "tarvel_reachable": True,
        "tarvel_via": "site1",
    }
    assert variables_of(inventory, "elsewhere")["tarvel_address"] == "10.9.0.1"
    assert variables_of(inventory, "10.0.0.250").get("tarvel_name") is None


def test_cards_whose_names_are_not_known_are_hosts_on_demand(ansible: Ansible, cards: list[tarvelsim.Card]) -> None:
    inventory = listed(ansible, written(ansible, groups_file=None, names=["card1"], unnamed=True))
    assert sorted(inventory["_meta"]["hostvars"]) == ["10.0.0.12", "10.0.0.13", "card1"]


def test_without_discovery_the_file_is_all_there_is(ansible: Ansible, cards: list[tarvelsim.Card]) -> None:
    inventory = listed(ansible, written(ansible, discover=False))
    assert variables_of(inventory, "card1")["tarvel_address"] == "10.0.0.11"
    assert variables_of(inventory, "card1")["tarvel_heard"] is False


def test_what_was_cached_is_not_asked_for_again(ansible: Ansible, cards: list[tarvelsim.Card]) -> None:
    cache = {"cache": True, "cache_plugin": "jsonfile", "cache_connection": str(ansible.folder / "cache")}
    path = written(ansible, **cache, names=["card3"])
    first = listed(ansible, path)
    again = listed(ansible, path, {"PATH": "/usr/bin:/bin"})  # without tarvelctl nobody can be asked
    assert again["_meta"] == first["_meta"]
    assert sorted(again["rack_1"]["hosts"]) == sorted(first["rack_1"]["hosts"])
    assert variables_of(again, "card3")["tarvel_heard"] is True


@pytest.mark.parametrize(
    ("options", "words"),
    [
        ({"groups_file": None}, "nobody is asked for: tell names or a groups_file"),
        ({"names": ["@nowhere"]}, "there is no group @nowhere in the groups file"),
        ({"interfaces": ["lan7"]}, "cannot broadcast on lan7: No such device"),
        ({"groups_file": "nothing"}, "No such file or directory"),
        ({"executable": "/bin/echo"}, "printed no JSON, but: -q -o json"),
        ({"executable": "no-such-program"}, "no-such-program"),
    ],
)
def test_an_inventory_that_cannot_be_made_is_an_error(
    ansible: Ansible, cards: list[tarvelsim.Card], options: dict[str, Any], words: str
) -> None:
    said = ansible.run("ansible-inventory", "-i", written(ansible, **options), "--list", code=1)
    assert words in " ".join(said.split())


def test_a_bad_line_of_the_groups_file_is_told_with_its_number(ansible: Ansible) -> None:
    ansible.groups.write_text("@rack1 card1\ncard1 10.0.0.11 more\n")
    said = ansible.run("ansible-inventory", "-i", written(ansible, discover=False), "--list", code=1)
    assert "groups, line 2: expected a name and its address" in " ".join(said.split())


def test_silence_is_an_inventory_of_silent_hosts(ansible: Ansible) -> None:
    path = written(ansible, interfaces=["lo"], groups_file=None, names=["card1"], timeout=0.2)
    assert variables_of(listed(ansible, path), "card1")["tarvel_heard"] is False
