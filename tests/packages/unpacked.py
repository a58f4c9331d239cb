# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The packages of scripts/package, unpacked into a folder: nothing is installed on this machine."""

import os
import subprocess
from pathlib import Path

from layout import ROOT

PACKAGES = ROOT / "build/packages"


def unpack(folder: Path) -> Path:
    packages = sorted(PACKAGES.glob("*.deb"))
    assert packages, f"there is no package in {PACKAGES}: scripts/package makes them"
    for package in packages:
        subprocess.run(["dpkg-deb", "--extract", package, folder], check=True)
    return folder


def environment(root: Path, work: Path) -> dict[str, str]:
    """Has programs found in the unpacked packages, and what they bring for others, as if it was installed."""
    plugins = work / ".local/lib/wireshark"
    plugins.mkdir(parents=True)
    (plugins / "plugins").symlink_to(next(root.glob("usr/lib/*/wireshark/plugins")))
    kept = {name: value for name, value in os.environ.items() if not name.startswith(("TARVEL", "ANSIBLE"))}
    return {
        **kept,
        "PATH": f"{root}/usr/bin:{os.environ['PATH']}",
        "TARVEL_ROOT": str(root),
        "AUTOPKGTEST_TMP": str(work),
        "ANSIBLE_COLLECTIONS_PATH": f"{root}/usr/share/ansible/collections",
    }
