# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Installs firmware on a card that has not the expected versions."""

from __future__ import annotations

from collections.abc import Mapping
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
  key:
    description:
      - A public key, on the host that runs the task. An archive that its holder has not signed is refused before any card
        is asked, as a card of the hardened build refuses it; also in check mode, and if the card has the versions already.
      - The archive is read again to be sent, so nobody else may replace it while the task runs.
      - On that host C(usign) has to be installed, or Debian's C(signify-openbsd), which checks the signature.
    type: path
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

- name: Have it there only if its maker has signed it
  tarvel.cards.firmware:
    card: "{{ inventory_hostname }}"
    src: /srv/firmware/release.tar.gz
    key: /srv/firmware/maker.pub
    expect:
      kernel: KERN-6.2.0
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
signed_by:
  description: The key whose holder has signed the archive.
  returned: if there is a I(key)
  type: str
"""


def given(params: Mapping[str, Any], *names: str) -> list[str]:
    """The options of the client for those that are given."""
    return [f"--{name.replace('_', '-')}={params[name]}" for name in names if params[name] is not None]


def signature(params: Mapping[str, Any], card: Card) -> dict[str, Any]:
    """Who has signed the archive, if that was asked."""
    if params["key"] is None:
        return {}
    checked = card.look_at_file("firmware", "check", *given(params, "key", "max_size"), params["src"])
    return {"signed_by": checked["signed_by"]}


def work(module: Any, card: Card) -> None:
    params = module.params
    expect = params["expect"]
    signed = signature(params, card)
    before = versions_of(card.read("versions")) if module._diff else {}
    words = given(params, "patience", "max_size")
    result = card.change("firmware", "upgrade", "--expect=/dev/stdin", *words, params["src"], expect=expect)
    if module._diff:
        # It ended well, so what the card has now is what was expected.
        card.show_diff({component: before.get(component) for component in expect}, expect)
    card.end(result, **signed)


def main() -> None:
    options = {
        "src": {"type": "path", "required": True},
        "expect": {"type": "dict", "required": True},
        "key": {"type": "path"},
        "state": {"type": "str", "choices": ["present"], "default": "present"},
        "patience": {"type": "int"},
        "max_size": {"type": "int"},
    }
    run(work, {**CHANGE, **PROBE, **options})


if __name__ == "__main__":
    main()
