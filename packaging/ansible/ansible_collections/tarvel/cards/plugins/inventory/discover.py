# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The cards of a network, and the groups of tarvelctl's groups file."""

from __future__ import annotations

import os
import subprocess
from pathlib import Path
from typing import Any

from ansible.errors import AnsibleParserError  # type: ignore[import]
from ansible.plugins.inventory import BaseInventoryPlugin, Cacheable, Constructable  # type: ignore[import]
from ansible_collections.tarvel.cards.plugins.module_utils.answer import TIMEOUT, ClientError, read_results, warnings
from ansible_collections.tarvel.cards.plugins.module_utils.cards import Cards, escaped, of_file

DOCUMENTATION = r"""
name: discover
short_description: Cards that C(tarvelctl) finds, in the groups of its groups file
description:
  - Makes hosts of the names that are asked for, whether they answer or not, and groups of the groups in the groups file.
  - Asks for the names with C(tarvelctl discover), which costs each card on the network some lines in its log.
  - The file has to be called C(*.cards.yml) or C(*.cards.yaml).
author:
  - The tarveld authors
requirements:
  - tarvelctl
extends_documentation_fragment:
  - constructed
  - inventory_cache
options:
  plugin:
    description: The name of this plugin.
    type: str
    required: true
    choices: [tarvel.cards.discover]
  groups_file:
    description:
      - The groups file of C(tarvelctl), looked for beside this file. All its names and groups are asked for.
    type: path
  names:
    description:
      - Names, ranges such as C(card[1-64]), or groups such as C(@rack1), that are asked for, too.
    type: list
    elements: str
    default: []
  discover:
    description:
      - Whether anybody is asked. Otherwise the names and the groups file are all there is, as for a network elsewhere.
    type: bool
    default: true
  unnamed:
    description:
      - Whether addresses that answer become hosts, too, though their names are not known. A card with two networks may
        be two of them.
    type: bool
    default: false
  via:
    description:
      - What the hosts get as C(tarvel_via), for C(delegate_to). The host of the network that has C(tarvelctl).
    type: str
    default: localhost
  executable:
    description:
      - The program; looked for in the usual folders if it is no path.
    type: str
    default: tarvelctl
  interfaces:
    description:
      - Broadcast, and listen, only on these interfaces. All that can broadcast, if not given.
    type: list
    elements: str
    default: []
  timeout:
    description:
      - How many seconds the cards are listened to. C(tarvelctl)'s own default, if not given.
    type: float
  patience:
    description:
      - How many seconds a run of C(tarvelctl) may take.
    type: float
    default: 120
"""

EXAMPLES = r"""
# site1.cards.yml
plugin: tarvel.cards.discover
groups_file: groups
names:
  - card[1-64]
via: site1
groups:
  silent: not tarvel_heard
keyed_groups:
  - prefix: on
    key: tarvel_interface
"""

SUFFIXES = ("cards.yml", "cards.yaml")


class InventoryModule(BaseInventoryPlugin, Constructable, Cacheable):  # type: ignore[misc]
    NAME = "tarvel.cards.discover"

    def verify_file(self, path: str) -> bool:
        return bool(super().verify_file(path)) and path.endswith(SUFFIXES)

    def parse(self, inventory: Any, loader: Any, path: str, cache: bool = True) -> None:
        super().parse(inventory, loader, path, cache)
        self._read_config_data(path)
        try:
            self._populate(self._cards(self.get_cache_key(path), cache))
        except (ClientError, OSError, subprocess.TimeoutExpired) as error:
            raise AnsibleParserError(str(error)) from error

    def _cards(self, key: str, cache: bool) -> Cards:
        """Those of the cache, if it has them and may be read."""
        caching = self.get_option("cache")
        if caching and cache and key in self._cache:
            return Cards(**self._cache[key])
        cards = self._look()
        if caching:
            self._cache[key] = vars(cards)
        return cards

    def _look(self) -> Cards:
        cards = Cards()
        groups, addresses = self._groups_file()
        for group in groups:
            cards.groups[group] = self._expand([f"@{group}"])
            cards.add(cards.groups[group], addresses)
        cards.add(self._expand([*map(escaped, addresses), *self.get_option("names")]), addresses)
        if not cards.hosts and not self.get_option("unnamed"):
            raise AnsibleParserError("nobody is asked for: tell names or a groups_file, or unnamed: true")
        if self.get_option("discover"):
            cards.hear(self._discover(cards.names()), self.get_option("unnamed"))
        return cards

    def _groups_file(self) -> tuple[list[str], dict[str, str]]:
        path = self.get_option("groups_file")
        return of_file(Path(path).read_text(encoding="utf-8", errors="surrogateescape")) if path else ([], {})

    def _expand(self, targets: list[str]) -> list[str]:
        """A dry run sends nothing, but knows whom it would send it to."""
        results = self._ask("--dry-run", "raw", "--command=2", "--", *targets) if targets else []
        return [result["target"] for result in results]

    def _discover(self, names: list[str]) -> list[dict[str, Any]]:
        timeout = self.get_option("timeout")
        options = [f"--interface={name}" for name in self.get_option("interfaces")]
        options += [] if timeout is None else [f"--timeout={timeout}"]
        try:
            return self._ask(*options, "discover", *[f"--names={name}" for name in names])
        except ClientError as error:
            if error.code != TIMEOUT:
                raise
            self.display.warning(str(error))  # that everybody is silent is an answer
            return []

    def _ask(self, *words: str) -> list[dict[str, Any]]:
        path = self.get_option("groups_file")
        command = [self.get_option("executable"), "-q", "-o", "json", *([f"--groups={path}"] if path else []), *words]
        ended = subprocess.run(
            command,
            stdin=subprocess.DEVNULL,
            capture_output=True,
            text=True,
            errors="surrogateescape",
            env={**os.environ, "LC_ALL": "C"},
            timeout=self.get_option("patience"),
            check=False,
        )
        for warning in warnings(ended.stderr):
            self.display.warning(warning)
        return read_results(ended.returncode, ended.stdout, ended.stderr)

    def _populate(self, cards: Cards) -> None:
        for group in cards.groups:
            self.inventory.add_group(self._sanitize_group_name(group))
        for host, variables in cards.hosts.items():
            self._add(host, {**variables, "tarvel_via": self.get_option("via")})
        for group, hosts in cards.groups.items():
            for host in hosts:
                self.inventory.add_child(self._sanitize_group_name(group), host)

    def _add(self, host: str, variables: dict[str, Any]) -> None:
        self.inventory.add_host(host)
        for name, value in variables.items():
            self.inventory.set_variable(host, name, value)
        strict = self.get_option("strict")
        self._set_composite_vars(self.get_option("compose"), variables, host, strict)
        self._add_host_to_composed_groups(self.get_option("groups"), variables, host, strict)
        self._add_host_to_keyed_groups(self.get_option("keyed_groups"), variables, host, strict)
