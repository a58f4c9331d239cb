# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Sets the IP configuration of a card's interface."""

from __future__ import annotations

from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.client import CHANGE, PROBE, Card, run
from ansible_collections.tarvel.cards.plugins.module_utils.settings import (
    SETTINGS,
    STATIC_HAS_ADDRESS,
    settings_words,
)

DOCUMENTATION = r"""
module: ip
short_description: Set the IP configuration of a card
description:
  - Changes one external interface of a card, unless it is as wanted already. The card commits everything that is staged,
    an NTP server, too, and restarts its network.
  - A card that does not come back gets its former configuration again, and the task fails.
options:
  card:
    description:
      - The name of the card; a configuration has to be told by name. An address is one only if the groups file gives it
        a name.
    type: str
    required: true
  interface:
    description:
      - The interface of the card.
    type: str
    choices: [VemkEth1, VemkEth2]
    required: true
  mode:
    description:
      - A C(static) address, one by C(dhcp), or none at all.
    type: str
    choices: [static, dhcp, disabled]
    required: true
  force:
    description:
      - Go on where another card could be meant (exit status 11), and give the card an address that somebody has, or that
        cannot be looked at.
    type: bool
    default: false
  no_rollback:
    description:
      - Go on where the change cannot be rolled back, for which C(tarvelctl) wants C(--yes).
    type: bool
    default: false
extends_documentation_fragment:
  - ansible.builtin.action_common_attributes
  - tarvel.cards.client
  - tarvel.cards.client.change
  - tarvel.cards.client.probe
  - tarvel.cards.client.settings
attributes:
  check_mode:
    support: full
    details: Whether somebody has the address is not asked then.
  diff_mode:
    support: full
  platform:
    platforms: posix
"""

EXAMPLES = r"""
- name: Move the card
  tarvel.cards.ip:
    card: "{{ inventory_hostname }}"
    interface: VemkEth1
    mode: static
    address: 10.0.0.20/24
    gateway: 10.0.0.1
  delegate_to: localhost
"""

RETURN = r"""
answer:
  description: All that C(tarvelctl) told of the card.
  returned: if it told something
  type: dict
  contains:
    now:
      description: What the interface was.
      type: str
      sample: Static 10.0.0.11/255.255.255.0
    wanted:
      description: What it is to be.
      type: str
    effect:
      description: What else the change effects.
      type: str
    state:
      description: C(as wanted), C(applied), or C(stored) if the card was not heard over the interface.
      type: str
    address_state:
      description: What was seen of the address, such as C(free).
      type: str
category:
  description: The kind of the failure in one word.
  returned: failure
  type: str
  sample: needs-force
rc:
  description: The exit status of C(tarvelctl).
  returned: failure
  type: int
  sample: 2
"""


def work(module: Any, card: Card) -> None:
    result = card.change("ip", "set", *settings_words(module.params))
    if module._diff:
        interface = module.params["interface"]
        card.show_diff({interface: result["now"]}, {interface: result["wanted"]})
    card.end(result)


def main() -> None:
    required = {name: {**SETTINGS[name], "required": True} for name in ("interface", "mode")}
    own = {"no_rollback": {"type": "bool", "default": False}}
    run(work, {**CHANGE, **PROBE, **SETTINGS, **required, **own}, required_if=STATIC_HAS_ADDRESS)


if __name__ == "__main__":
    main()
