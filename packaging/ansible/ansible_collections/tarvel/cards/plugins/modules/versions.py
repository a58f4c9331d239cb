# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The versions of a card's components."""

from __future__ import annotations

from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.answer import versions_of
from ansible_collections.tarvel.cards.plugins.module_utils.client import Card, run

DOCUMENTATION = r"""
module: versions
short_description: Tell the versions of a card's components
description:
  - Reads the versions of a card's components, as facts of the host that the task is for.
  - With I(expect), fails if the card has others.
options:
  expect:
    description:
      - Components, and the version that each shall have. Others are not looked at.
    type: dict
extends_documentation_fragment:
  - ansible.builtin.action_common_attributes
  - ansible.builtin.action_common_attributes.facts
  - tarvel.cards.client
attributes:
  check_mode:
    support: full
  diff_mode:
    support: none
    details: It changes nothing.
  facts:
    support: full
  platform:
    platforms: posix
"""

EXAMPLES = r"""
- name: Look what the card runs
  tarvel.cards.versions:
    card: "{{ inventory_hostname }}"
  delegate_to: localhost

- name: Stop if it is not the release
  tarvel.cards.versions:
    card: "{{ inventory_hostname }}"
    expect:
      kernel: KERN-6.2.0
      application: APPL-2.6.0
  delegate_to: localhost
"""

RETURN = r"""
ansible_facts:
  description: The versions by component.
  returned: success
  type: dict
  contains:
    tarvel_versions:
      description: The versions by component.
      type: dict
      sample: {kernel: KERN-6.2.0}
answer:
  description: All that C(tarvelctl) told of the card; of a failure with I(expect), the differing C(components).
  returned: if it told something
  type: dict
category:
  description: The kind of the failure in one word.
  returned: failure
  type: str
  sample: differs
rc:
  description: The exit status of C(tarvelctl).
  returned: failure
  type: int
  sample: 9
"""


def work(module: Any, card: Card) -> None:
    expect = module.params["expect"]
    if expect is not None:
        card.read("versions", "--expect=/dev/stdin", expect=expect)
    result = card.read("versions")
    card.end(result, ansible_facts={"tarvel_versions": versions_of(result)})


def main() -> None:
    run(work, {"expect": {"type": "dict"}})


if __name__ == "__main__":
    main()
