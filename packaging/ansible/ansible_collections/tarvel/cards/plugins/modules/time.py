# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Sets the time reference of a card."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

from ansible_collections.tarvel.cards.plugins.module_utils.client import CHANGE, PROBE, Card, run

DOCUMENTATION = r"""
module: time
short_description: Set the time reference of a card
description:
  - Sets the NTP server of a card, or its clock by hand, unless it is as wanted already.
  - A card stages the server and does not commit it. It is lost with a reboot, unless something commits it, as a change of
    the IP configuration does.
options:
  mode:
    description:
      - With C(ntp) the card follows I(server). With C(manual) it follows none, and its clock is set to that of the host
        that runs the task, unless it is within I(tolerance) of that.
    type: str
    choices: [ntp, manual]
    required: true
  server:
    description:
      - The NTP server.
    type: str
  tolerance:
    description:
      - How many seconds a clock that is set by hand may be off. What the measurement leaves open, half a second at least,
        is not counted.
    type: float
    default: 2
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
- name: Have the card follow the site's clock
  tarvel.cards.time:
    card: "{{ inventory_hostname }}"
    mode: ntp
    server: 10.0.0.5
  delegate_to: localhost

- name: Set the clock by hand if it is more than ten seconds off
  tarvel.cards.time:
    card: "{{ inventory_hostname }}"
    mode: manual
    tolerance: 10
  delegate_to: localhost
"""

RETURN = r"""
answer:
  description: All that C(tarvelctl) told of the card.
  returned: if it told something
  type: dict
  contains:
    mode:
      description: C(Ntp) or C(Manual).
      type: str
    server:
      description: The NTP server that is set, used or not.
      type: str
    time:
      description: The clock of the card.
      type: str
    skew:
      description: How many seconds it is ahead.
      type: float
    skew_error:
      description: Give or take these.
      type: float
hint:
  description: A sentence for whoever reads it, such as that the server is only staged.
  returned: always
  type: str
category:
  description: The kind of the failure in one word.
  returned: failure
  type: str
  sample: refused-by-card
rc:
  description: The exit status of C(tarvelctl).
  returned: failure
  type: int
  sample: 3
"""


def is_off(clock: Mapping[str, Any], tolerance: float) -> bool:
    """As far as was measured."""
    return clock["skew"] is None or abs(clock["skew"]) - clock["skew_error"] > tolerance


def reference(clock: Mapping[str, Any], off: bool) -> dict[str, Any]:
    """For the diff: the clock itself is another one each time."""
    state = {"mode": clock["mode"], "server": clock["server"]}
    return {**state, "clock": f"{clock['skew']} s ahead"} if off else state


def work(module: Any, card: Card) -> None:
    params = module.params
    by_hand = params["mode"] == "manual"
    if by_hand and params["server"]:
        raise ValueError("mode: manual takes no server")
    before = card.read("time", "get") if by_hand or module._diff else {}
    off = by_hand and is_off(before, params["tolerance"])
    if by_hand and before["mode"] == "Manual" and not off:
        result = before
    else:
        result = card.change("time", "set", "--manual=now" if by_hand else f"--ntp={params['server']}")
    if module._diff:
        wanted = {"mode": "Manual", "server": before["server"]} if by_hand else {"mode": "Ntp", "server": params["server"]}
        card.show_diff(reference(before, off), {**wanted, "clock": "right"} if off else wanted)
    card.end(result)


def main() -> None:
    options = {
        "mode": {"type": "str", "choices": ["ntp", "manual"], "required": True},
        "server": {"type": "str"},
        "tolerance": {"type": "float", "default": 2.0},
    }
    run(work, {**CHANGE, **PROBE, **options}, required_if=[("mode", "ntp", ("server",))])


if __name__ == "__main__":
    main()
