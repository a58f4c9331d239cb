# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Configuration files of a card with given settings."""

from model.settings import Value

_INTERFACES = {"lanvemt2eth1": "eth0", "lanvemt2eth2": "eth1"}


def files(options: dict[str, Value | None], host: str) -> dict[str, str]:
    network = "".join(_section("interface", name, {"ifname": device}, options) for name, device in _INTERFACES.items())
    system = f"\nconfig system\n\toption hostname '{host}'\n" + _timeserver(options)
    return {"/etc/config/network": network, "/etc/config/system": system}


def _section(kind: str, name: str, fixed: dict[str, str], options: dict[str, Value | None]) -> str:
    prefix = f"network.{name}."
    chosen = {key.removeprefix(prefix): value for key, value in options.items() if key.startswith(prefix)}
    every: dict[str, Value | None] = {**fixed, **chosen}
    lines = "".join(_line(option, value) for option, value in every.items())
    return f"\nconfig {kind} '{name}'\n{lines}"


def _timeserver(options: dict[str, Value | None]) -> str:
    return "\nconfig timeserver 'ntp'\n\toption enabled '1'\n" + _line("server", options.get("system.ntp.server"))


def _line(option: str, value: Value | None) -> str:
    if value is None:
        return ""
    if isinstance(value, str):
        return f"\toption {option} '{value}'\n"
    return "".join(f"\tlist {option} '{item}'\n" for item in value)


def settings(options: dict[str, Value | None], host: str) -> dict[str, Value]:
    """What those files say."""
    told: dict[str, Value] = {f"network.{name}.ifname": device for name, device in _INTERFACES.items()}
    told |= {"system.@system[0].hostname": host, "system.ntp.enabled": "1"}
    return told | {key: value for key, value in options.items() if value is not None}
