# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A firmware archive as the card's upgrade script wants it."""

import subprocess
from collections.abc import Mapping
from pathlib import Path


def pack_firmware(directory: Path, versions: Mapping[str, str]) -> Path:
    """One file per component below pnr/, its version inside. They belong to root, the only owner a card knows."""
    parts = directory / "pnr"
    parts.mkdir()
    for component, version in versions.items():
        (parts / component).write_text(f"{version}\n", encoding="ascii")
    archive = directory / "firmware.tar.gz"
    ownership = ["--owner=0", "--group=0", "--numeric-owner"]
    subprocess.run(["tar", "-czf", str(archive), "-C", str(directory), *ownership, "pnr"], check=True)
    return archive
