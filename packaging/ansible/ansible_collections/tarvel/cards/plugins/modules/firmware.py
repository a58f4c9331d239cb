# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Installs firmware on a card that has not the expected versions."""

from __future__ import annotations

from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.answer import versions_of
from ansible_collections.tarvel.cards.plugins.module_utils.client import CHANGE, PROBE, Card, run

DOCUMENTATION = r"""
module: firmware
short_description: Install firmware on a card
description:
  - Uploads an archive and has the card install it, unless the card has the expected versions already.
  - A card reports success before it installs anything, so its versions are compared afterwards. One that has not the
    expected ones then is a failure.
options:
  src:
    description:
      - The archive, on the host that runs the task. It is looked through first; one that would do harm is refused.
    type: path
    required: true
  expect:
    description:
      - Components, and the version that each shall have.
    type: dict
    required: true
  state:
    description:
      - The expected versions are C(present).
    type: str
    choices: [present]
    default: present
  patience:
    description:
      - Seconds that the card may take without a sign of progress. C(tarvelctl)'s own default, if not given.
    type: int
  max_size:
    description:
      - Refuse an archive whose files are larger together, in MiB. C(tarvelctl)'s own default, if not given.
    type: int
extends_documentation_fragment:
  - ansible.builtin.action_common_attributes
  - tarvel.cards.client
  - tarvel.cards.client.change
  - tarvel.cards.client.probe
attributes:
  check_mode:
    support: full
  diff_mode:
    support: full
  platform:
    platforms: posix
"""

EXAMPLES = r"""
- name: Have the release on the card
  tarvel.cards.firmware:
    card: "{{ inventory_hostname }}"
    src: /srv/firmware/release.tar.gz
    expect:
      kernel: KERN-6.2.0
      application: APPL-2.6.0
  delegate_to: localhost
"""

RETURN = r"""
answer:
  description: All that C(tarvelctl) told of the card.
  returned: if it told something
  type: dict
  contains:
    verdict:
      description: C(already there), C(upgraded), or C(not sent) in check mode.
      type: str
      sample: upgraded
    changes:
      description: The components that are others now, with their versions C(before) and C(after).
      type: list
      elements: dict
category:
  description: The kind of the failure in one word.
  returned: failure
  type: str
  sample: not-as-expected
rc:
  description: The exit status of C(tarvelctl).
  returned: failure
  type: int
  sample: 7
"""


def work(module: Any, card: Card) -> None:
    params = module.params
    expect = params["expect"]
    before = versions_of(card.read("versions")) if module._diff else {}
    given = [name for name in ("patience", "max_size") if params[name] is not None]
    words = [f"--{name.replace('_', '-')}={params[name]}" for name in given]
    result = card.change("firmware", "upgrade", "--expect=/dev/stdin", *words, params["src"], expect=expect)
    if module._diff:
        # It ended well, so what the card has now is what was expected.
        card.show_diff({component: before.get(component) for component in expect}, expect)
    card.end(result)


def main() -> None:
    options = {
        "src": {"type": "path", "required": True},
        "expect": {"type": "dict", "required": True},
        "state": {"type": "str", "choices": ["present"], "default": "present"},
        "patience": {"type": "int"},
        "max_size": {"type": "int"},
    }
    run(work, {**CHANGE, **PROBE, **options})


if __name__ == "__main__":
    main()
