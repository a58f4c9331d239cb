# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Who makes firmware, and who only changes it."""

import hashlib
import subprocess
from pathlib import Path


class Maker:
    """Somebody with a pair of keys."""

    def __init__(self, directory: Path, name: str) -> None:
        self.secret, self.public = directory / f"{name}.sec", directory / f"{name}.pub"
        subprocess.run(["signify-openbsd", "-G", "-n", "-p", self.public, "-s", self.secret], check=True)

    def sign(self, sums: bytes) -> bytes:
        sums_file = self.secret.with_suffix(".sums")
        sums_file.write_bytes(sums)
        signature = self.secret.with_suffix(".sig")
        command: list[str | Path] = ["signify-openbsd", "-S", "-s", self.secret, "-m", sums_file, "-x", signature]
        subprocess.run(command, check=True)
        return signature.read_bytes()

    def archive(self, files: dict[str, bytes]) -> dict[str, bytes]:
        """The members of firmware as it ought to be."""
        sums = "".join(f"{hashlib.sha256(data).hexdigest()}  {name}\n" for name, data in files.items()).encode()
        return {"pnr/": b"", **files, "SHA256SUMS": sums, "SHA256SUMS.sig": self.sign(sums)}


def changed(members: dict[str, bytes], name: str, content: bytes | None) -> dict[str, bytes]:
    """With another content of one member, or without it."""
    return {key: data for key, data in {**members, name: content}.items() if data is not None}
