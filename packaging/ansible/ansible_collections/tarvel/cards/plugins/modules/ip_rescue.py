# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Brings a lost card back."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.client import FORCE, PROBE, Card, run
from ansible_collections.tarvel.cards.plugins.module_utils.settings import (
    SETTINGS,
    STATIC_HAS_ADDRESS,
    settings_words,
)

DOCUMENTATION = r"""
module: ip_rescue
short_description: Bring back a card that has no address that works
description:
  - Broadcasts an IP configuration for the name of a card until the card answers with it. The card commits everything
    that is staged, an NTP server, too, and restarts its network.
  - What the card had before the last change that was made from this host, by this user, if no I(mode) is given.
  - A card that answers from an address that works on this host is no lost one, and is left alone.
options:
  card:
    description:
      - The name of the card; a configuration has to be told by name. An address is one only if the groups file gives it
        a name.
    type: str
    required: true
  interface:
    description:
      - The interface of the card; needed with I(mode).
    type: str
    choices: [VemkEth1, VemkEth2]
  mode:
    description:
      - A C(static) address, one by C(dhcp), or none at all. What the interface had formerly, if not given.
    type: str
    choices: [static, dhcp, disabled]
  to:
    description:
      - The number of the former settings that the card shall have, as C(tarvelctl ip rescue --list) shows them. Those
        before the last change, if not given.
    type: int
  force:
    description:
      - Give also a card that is not lost these settings, unless it has them already; without a way back. Give the card an
        address that somebody has, or that cannot be looked at. Go on where another card could be meant (exit status 11).
    type: bool
    default: false
extends_documentation_fragment:
  - ansible.builtin.action_common_attributes
  - tarvel.cards.client
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
- name: Give the card back what it had
  tarvel.cards.ip_rescue:
    card: "{{ inventory_hostname }}"
  delegate_to: localhost
  when: not tarvel_reachable

- name: Give the card an address in this network
  tarvel.cards.ip_rescue:
    card: "{{ inventory_hostname }}"
    interface: VemkEth1
    mode: static
    address: 10.0.0.11/24
  delegate_to: localhost
"""

RETURN = r"""
answer:
  description: All that C(tarvelctl) told of the card.
  returned: if it told something
  type: dict
  contains:
    interface:
      description: Which one it is about.
      type: str
      sample: VemkEth1
    now:
      description: What the interface was; C(not heard) if the card did not answer.
      type: str
      sample: Static 172.16.5.5/255.255.255.0
    reachable:
      description: Whether the card answered from an address that works here.
      type: bool
    wanted:
      description: What it is to be.
      type: str
    time:
      description: When that was seen on the card, if it is what it had formerly.
      type: str
    state:
      description: C(rescued), or C(stored) if the card was not heard over the interface.
      type: str
    address_state:
      description: What was seen of the address, such as C(free).
      type: str
left_alone:
  description: Whether nothing is sent because the card is not lost, or with I(force) has the settings already.
  returned: success
  type: bool
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


def is_well(plan: Mapping[str, Any], force: bool) -> bool:
    return bool(plan["reachable"]) and (not force or plan["now"] == plan["wanted"])


def work(module: Any, card: Card) -> None:
    params = module.params
    former = [] if params["to"] is None else [f"--to={params['to']}"]
    words = ("ip", "rescue", *settings_words(params), *former)
    plan = card.rehearse(*words)
    left_alone = is_well(plan, params["force"])
    if module._diff:
        wanted = plan["now"] if left_alone else plan["wanted"]
        card.show_diff({plan["interface"]: plan["now"]}, {plan["interface"]: wanted})
    if left_alone:
        card.end(plan, changed=False, left_alone=True)
    else:
        card.end(plan if module.check_mode else card.change(*words), left_alone=False)


def main() -> None:
    run(
        work,
        {**FORCE, **PROBE, **SETTINGS, "to": {"type": "int"}},
        required_if=STATIC_HAS_ADDRESS,
        required_together=[("interface", "mode")],
        required_by={"address": ("mode",), "gateway": ("mode",)},
        mutually_exclusive=[("to", "mode")],
    )


if __name__ == "__main__":
    main()
