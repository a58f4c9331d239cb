# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What cmake --install brings, part by part."""

import subprocess
from pathlib import Path

import pytest
from layout import COMPLETIONS, complaints_about_page, files, installed, is_tidy, tracked

COLLECTION = "packaging/ansible/ansible_collections"


def test_the_daemon_is_a_program_and_its_manual_page(tmp_path: Path) -> None:
    assert files(installed("daemon", tmp_path)) == {"sbin/tarveld", "share/man/man8/tarveld.8"}


def test_the_client_comes_with_completions_and_a_manual_page(tmp_path: Path) -> None:
    page = "share/man/man1/tarvelctl.1"
    assert files(installed("client", tmp_path)) == {"bin/tarvelctl", page, *COMPLETIONS.values()}


@pytest.mark.parametrize("shell", COMPLETIONS)
def test_a_completion_is_what_the_installed_client_prints(tmp_path: Path, shell: str) -> None:
    folder = installed("client", tmp_path)
    printed = subprocess.run([folder / "bin/tarvelctl", "completion", shell], check=True, capture_output=True).stdout
    assert (folder / COMPLETIONS[shell]).read_bytes() == printed
    assert b"tarvelctl" in printed


@pytest.mark.parametrize(
    ("component", "page"),
    [
        ("client", "man1/tarvelctl.1"),
        ("daemon", "man8/tarveld.8"),
        ("sim", "man1/tarvel-card.1"),
        ("sim", "man1/tarvel-lan.1"),
    ],
)
def test_a_manual_page_is_typeset_without_a_complaint(tmp_path: Path, component: str, page: str) -> None:
    assert complaints_about_page(installed(component, tmp_path) / "share/man" / page) == ""


def test_the_integrations_lie_where_their_programs_look(tmp_path: Path) -> None:
    collection = {name for name in tracked(COLLECTION) if "/tests/" not in name}
    assert files(installed("integrations", tmp_path)) == {
        "etc/prometheus/rules/tarvel.yml",
        "lib/systemd/system/tarvelctl-metrics.service",
        "lib/systemd/system/tarvelctl-metrics.timer",
        "lib/wireshark/plugins/tarvel.lua",
        *(f"share/ansible/collections/ansible_collections/{name}" for name in collection),
    }


def test_simulated_cards_lie_in_one_folder_with_their_daemon(tmp_path: Path) -> None:
    sources = {name for name in tracked("sim") if name.startswith(("card/", "tarvelsim/"))}
    programs = {"tarveld", "scripts/card", "sim/lan", "sim/bin/gate", "sim/bin/libsetlbf.so", "sim/bin/uci"}
    assert files(installed("sim", tmp_path)) == {
        "bin/tarvel-card",
        "bin/tarvel-lan",
        "share/man/man1/tarvel-card.1",
        "share/man/man1/tarvel-lan.1",
        *(f"lib/tarvel-sim/{name}" for name in programs),
        *(f"lib/tarvel-sim/sim/{name}" for name in sources),
    }


@pytest.mark.parametrize("program", ["tarvel-card", "tarvel-lan"])
def test_an_installed_program_calls_itself_by_the_name_it_has_there(tmp_path: Path, program: str) -> None:
    words = [str(installed("sim", tmp_path) / "bin" / program), "--help"]
    assert subprocess.run(words, check=True, capture_output=True, text=True).stdout.startswith(f"usage: {program} ")


@pytest.mark.parametrize("component", ["client", "daemon", "integrations", "sim"])
def test_everybody_may_read_what_is_installed(tmp_path: Path, component: str) -> None:
    folder = installed(component, tmp_path)
    assert [path for path in folder.rglob("*") if not is_tidy(path)] == []
