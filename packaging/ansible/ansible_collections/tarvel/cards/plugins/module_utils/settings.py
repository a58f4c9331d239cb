# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What an interface of a card shall be, as modules are given it and tarvelctl is told it."""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any

SETTINGS: dict[str, Any] = {
    "interface": {"type": "str", "choices": ["VemkEth1", "VemkEth2"]},
    "mode": {"type": "str", "choices": ["static", "dhcp", "disabled"]},
    "address": {"type": "str"},
    "gateway": {"type": "str"},
    "wait": {"type": "int"},
}
STATIC_HAS_ADDRESS = [("mode", "static", ("address",))]


def settings_words(params: Mapping[str, Any]) -> list[str]:
    """The options of tarvelctl; none but the patience if there is no mode."""
    patience = [] if params["wait"] is None else [f"--wait={params['wait']}"]
    if params["mode"] is None:
        return patience
    return [f"--if={params['interface']}", configuration(params), *patience]


def configuration(params: Mapping[str, Any]) -> str:
    if params["mode"] == "static":
        gateway = f",{params['gateway']}" if params["gateway"] else ""
        return f"--static={params['address']}{gateway}"
    if params["address"] or params["gateway"]:
        raise ValueError(f"mode: {params['mode']} takes neither address nor gateway")
    return f"--{params['mode']}"
