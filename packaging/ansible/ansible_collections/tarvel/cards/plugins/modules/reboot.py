# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Reboots a card."""

from __future__ import annotations

from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.client import CHANGE, Card, run

DOCUMENTATION = r"""
module: reboot
short_description: Reboot a card
description:
  - Reboots a card, each time that it is run.
options:
  card:
    description:
      - The name of the card; a reboot has to be told by name. An address is one only if the groups file gives it a name.
    type: str
    required: true
  wait:
    description:
      - Until the card has gone down and come back. Otherwise that it reboots is only the card's word.
    type: bool
    default: false
  wait_time:
    description:
      - How many seconds that may take. C(tarvelctl)'s own default, if not given.
    type: int
extends_documentation_fragment:
  - ansible.builtin.action_common_attributes
  - tarvel.cards.client
  - tarvel.cards.client.change
attributes:
  check_mode:
    support: full
  diff_mode:
    support: none
    details: A card that was rebooted is as it was before.
  platform:
    platforms: posix
"""

EXAMPLES = r"""
- name: Reboot the card and see it come back
  tarvel.cards.reboot:
    card: "{{ inventory_hostname }}"
    wait: true
  delegate_to: localhost
"""

RETURN = r"""
answer:
  description: All that C(tarvelctl) told of the card.
  returned: if it told something
  type: dict
  contains:
    state:
      description: C(rebooting), or C(back) if that was waited for.
      type: str
      sample: back
    down_after:
      description: Seconds until it was down.
      type: float
    back_after:
      description: Seconds until it was back.
      type: float
category:
  description: The kind of the failure in one word.
  returned: failure
  type: str
  sample: ambiguous
rc:
  description: The exit status of C(tarvelctl).
  returned: failure
  type: int
  sample: 11
"""


def work(module: Any, card: Card) -> None:
    params = module.params
    words = ["--wait"] if params["wait"] else []
    words += [] if params["wait_time"] is None else [f"--wait-time={params['wait_time']}"]
    card.end(card.change("reboot", *words))


def main() -> None:
    options = {"wait": {"type": "bool", "default": False}, "wait_time": {"type": "int"}}
    run(work, {**CHANGE, **options})


if __name__ == "__main__":
    main()
