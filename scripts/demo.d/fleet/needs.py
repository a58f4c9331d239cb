# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The programs that the tour needs beside ours, and where Debian has them."""

import shutil

_PACKAGES = {
    "ansible-playbook": "ansible-core",
    "dumpcap": "wireshark-common",
    "prometheus": "prometheus",
    "prometheus-node-exporter": "prometheus-node-exporter",
    "promtool": "prometheus",
    "tshark": "tshark",
}


def missing() -> list[str]:
    """Each with the name of its package."""
    absent = [name for name in _PACKAGES if shutil.which(name) is None]
    return [f"{name} (Debian package {_PACKAGES[name]})" for name in absent]
