# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Folders, and what lies in them."""

import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build/release"

COMPLETIONS = {
    "bash": "share/bash-completion/completions/tarvelctl",
    "zsh": "share/zsh/site-functions/_tarvelctl",
    "fish": "share/fish/vendor_completions.d/tarvelctl.fish",
}


def installed(component: str, folder: Path) -> Path:
    """A component of the shipped build, with the folder in place of /usr; the folder."""
    words = ["cmake", "--install", str(BUILD), "--component", component, "--prefix", str(folder)]
    subprocess.run(words, check=True, capture_output=True)
    return folder


def files(folder: Path) -> set[str]:
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def tracked(folder: str) -> set[str]:
    """The files of a folder of the tree, as seen from there."""
    listing = subprocess.run(["git", "ls-files", "."], cwd=ROOT / folder, check=True, capture_output=True, text=True)
    return set(listing.stdout.split())


def is_tidy(path: Path) -> bool:
    """The owner may write, everybody may read, and what can be run can be run by all."""
    return path.is_symlink() or path.stat().st_mode & 0o7777 in (0o644, 0o755)


def complaints_about_page(page: Path) -> str:
    """What the typesetter says of a manual page."""
    words = ["groff", "-man", "-ww", "-Tutf8", "-Kutf8", "-t", "-z", "-rLL=80n", str(page)]
    return subprocess.run(words, check=True, capture_output=True, text=True).stderr
