# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The collection as its users get it: documented, clean under ansible-lint, and packed."""

import importlib
import json
import shutil
import subprocess
import tarfile
from pathlib import Path
from typing import Any

import pytest
from playing import COLLECTION, Ansible

MODULES = sorted(path.stem for path in (COLLECTION / "plugins/modules").glob("*.py"))


@pytest.fixture
def ansible(tmp_path: Path) -> Ansible:
    return Ansible(tmp_path)


def test_every_module_has_documentation_that_its_options_agree_with(
    ansible: Ansible, monkeypatch: pytest.MonkeyPatch
) -> None:
    names = [f"tarvel.cards.{name}" for name in MODULES]
    told = json.loads(ansible.run("ansible-doc", "-t", "module", "-j", *names))
    assert sorted(told) == names
    for name in MODULES:
        page = told[f"tarvel.cards.{name}"]
        assert page["examples"].count(f"tarvel.cards.{name}:") >= 1
        assert {"answer", "category", "rc"} <= page["return"].keys()
        assert {option: as_specified(text) for option, text in page["doc"]["options"].items()} == options_of(
            name, monkeypatch
        )


def as_specified(documented: dict[str, Any]) -> dict[str, Any]:
    return {
        name: documented[name]
        for name in ("type", "required", "choices", "elements", "default")
        if documented.get(name) not in (None, False)
    }


def options_of(name: str, monkeypatch: pytest.MonkeyPatch) -> dict[str, Any]:
    """What the module gives to Ansible, in the words of its documentation."""
    given: dict[str, Any] = {}
    client = importlib.import_module("ansible_collections.tarvel.cards.plugins.module_utils.client")

    def catch(spec: dict[str, Any], supports_check_mode: bool, **rules: Any) -> None:
        assert supports_check_mode
        given.update({option: as_specified(text) for option, text in spec.items()})

    monkeypatch.setattr(client, "AnsibleModule", catch)
    monkeypatch.setattr(client, "work_on", lambda module, work: None)
    importlib.import_module(f"ansible_collections.tarvel.cards.plugins.modules.{name}").main()
    return given


def test_every_module_declares_what_it_supports(ansible: Ansible) -> None:
    told = json.loads(ansible.run("ansible-doc", "-t", "module", "-j", *(f"tarvel.cards.{name}" for name in MODULES)))
    for page in told.values():
        assert page["doc"]["attributes"]["check_mode"]["support"] == "full"
    with_diff = [name for name, page in told.items() if page["doc"]["attributes"]["diff_mode"]["support"] == "full"]
    assert with_diff == [f"tarvel.cards.{name}" for name in ("firmware", "ip", "ip_rescue", "time")]


def test_the_inventory_is_documented(ansible: Ansible) -> None:
    # ansible-doc ends with 0 for a plugin that it does not find.
    told = json.loads(ansible.run("ansible-doc", "-t", "inventory", "-j", "tarvel.cards.discover"))
    options = told["tarvel.cards.discover"]["doc"]["options"]
    assert {"groups_file", "names", "via", "cache", "keyed_groups"} <= options.keys()


def test_the_linter_has_nothing_to_say(ansible: Ansible) -> None:
    # Without arguments it looks at all files that git knows; in a copy, because it writes beside them.
    collection = ansible.folder / "ansible_collections/tarvel/cards"
    shutil.copytree(COLLECTION, collection, ignore=shutil.ignore_patterns("__pycache__"))
    subprocess.run(["git", "init", "-q", str(collection)], check=True)
    own = {"ANSIBLE_COLLECTIONS_PATH": str(ansible.folder)}
    ansible.run("ansible-lint", "--offline", "--nocolor", "--strict", cwd=collection, extra=own)
    playbook = collection / "playbooks/rollout.yml"
    playbook.write_text(playbook.read_text().replace("tarvel.cards.versions", "tarvel.cards.nothing"))
    said = ansible.run("ansible-lint", "--offline", "--nocolor", str(playbook), cwd=collection, code=2, extra=own)
    assert "tarvel.cards.nothing" in said


def test_the_archive_holds_the_collection_and_nothing_else(ansible: Ansible) -> None:
    collection = ansible.folder / "cards"
    shutil.copytree(COLLECTION, collection, ignore=shutil.ignore_patterns("__pycache__"))
    ours = {str(path.relative_to(collection)) for path in collection.rglob("*") if path.is_file()}
    (collection / "plugins/modules/__pycache__").mkdir()
    for stray in ("tarvel-cards-0.9.0.tar.gz", "plugins/modules/__pycache__/ip.pyc", "plugins/modules/ip.pyc"):
        (collection / stray).write_text("stray")
    ansible.run("ansible-galaxy", "collection", "build", "--output-path", str(ansible.folder), cwd=collection)
    (archive,) = ansible.folder.glob("tarvel-cards-*.tar.gz")
    with tarfile.open(archive) as packed:
        files = {member.name for member in packed.getmembers() if member.isfile()}
    assert files == (ours - {"galaxy.yml"}) | {"MANIFEST.json", "FILES.json"}
