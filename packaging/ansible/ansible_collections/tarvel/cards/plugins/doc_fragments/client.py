# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the modules' documentation has in common."""

from __future__ import annotations


class ModuleDocFragment:
    DOCUMENTATION = r"""
notes:
  - C(tarvelctl) runs where the task runs, and cards run no Python. So give a task for a card to a host of the card's
    network, with C(delegate_to).
  - C(tarvelctl) reads its own groups file, and remembers what it has to, in the folders of the user of the task.
options:
  card:
    description:
      - Name or address of the card. A range, a group or a list is refused, because Ansible itself does many.
    type: str
    required: true
  executable:
    description:
      - The program; looked for in the usual folders if it is no path.
    type: str
    default: tarvelctl
  groups_file:
    description:
      - Names and addresses are read from this file instead of the user's own.
    type: path
  interfaces:
    description:
      - Broadcast, and listen, only on these interfaces of the host. All that can broadcast, if not given.
    type: list
    elements: str
    default: []
  timeout:
    description:
      - Seconds for one step, to connect or to be answered. C(tarvelctl)'s own default, if not given.
    type: float
  retries:
    description:
      - How often a request that changes nothing is repeated. C(tarvelctl)'s own default, if not given.
    type: int
requirements:
  - tarvelctl
  - python >= 3.9
author:
  - The tarveld authors
"""

    CHANGE = r"""
options:
  force:
    description:
      - Go on where another card could be meant (exit status 11), or where C(tarvelctl) otherwise says that it needs
        C(--force).
    type: bool
    default: false
  trust_groups:
    description:
      - Change the card at the address that the groups file gives its name, although the name is not heard, as behind a
        router.
    type: bool
    default: false
"""

    PROBE = r"""
options:
  probe:
    description:
      - Ask first whether two cards share an address. The question costs a warning in the log of every card on the
        network.
    type: bool
    default: true
"""

    SETTINGS = r"""
options:
  address:
    description:
      - The static address with its netmask, as C(10.0.0.11/24) or C(10.0.0.11/255.255.255.0).
    type: str
  gateway:
    description:
      - The gateway of a static address. None, if not given.
    type: str
  wait:
    description:
      - How many seconds the card may take to be back. C(tarvelctl)'s own default, if not given.
    type: int
"""
