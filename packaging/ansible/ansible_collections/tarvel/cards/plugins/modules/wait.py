# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Waits until a card is as it should be."""

from __future__ import annotations

from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.answer import TIMEOUT, ClientError
from ansible_collections.tarvel.cards.plugins.module_utils.client import Card, run

DOCUMENTATION = r"""
module: wait
short_description: Wait until a card is as it should be
description:
  - Looks every two seconds until the card is up, down or idle, or has the expected versions.
  - In check mode it looks once, tells what it saw, and does not fail because of that.
options:
  for:
    description:
      - C(up) if the card takes connections or answers by its name, C(down) if it does neither, C(idle) if it tells its
        versions, C(versions) if it tells those of I(expect).
    type: str
    choices: [up, down, idle, versions]
    default: idle
  expect:
    description:
      - Components, and the version that each shall have; needed for C(versions).
    type: dict
  wait_time:
    description:
      - How many seconds that may take. C(tarvelctl)'s own default, if not given.
    type: int
extends_documentation_fragment:
  - ansible.builtin.action_common_attributes
  - tarvel.cards.client
attributes:
  check_mode:
    support: full
  diff_mode:
    support: none
    details: It changes nothing.
  platform:
    platforms: posix
"""

EXAMPLES = r"""
- name: Wait until the card can be asked
  tarvel.cards.wait:
    card: "{{ inventory_hostname }}"
    for: idle
    wait_time: 300
  delegate_to: localhost
"""

RETURN = r"""
answer:
  description: All that C(tarvelctl) told of the card.
  returned: if it told something
  type: dict
  contains:
    state:
      description: What the card was last seen to be.
      type: str
      sample: up and idle
    seconds:
      description: How long it took.
      type: float
category:
  description: The kind of the failure in one word.
  returned: failure
  type: str
  sample: timeout
rc:
  description: The exit status of C(tarvelctl).
  returned: failure
  type: int
  sample: 5
"""


def work(module: Any, card: Card) -> None:
    params = module.params
    goal = "versions=/dev/stdin" if params["for"] == "versions" else params["for"]
    seconds = 0 if module.check_mode else params["wait_time"]
    limit = [] if seconds is None else [f"--wait-time={seconds}"]
    try:
        result = card.read("wait", f"--for={goal}", *limit, expect=params["expect"])
    except ClientError as error:
        if not module.check_mode or error.code != TIMEOUT:
            raise
        result = error.result
    card.end(result)


def main() -> None:
    options = {
        "for": {"type": "str", "choices": ["up", "down", "idle", "versions"], "default": "idle"},
        "expect": {"type": "dict"},
        "wait_time": {"type": "int"},
    }
    run(work, options, required_if=[("for", "versions", ("expect",))])


if __name__ == "__main__":
    main()
