# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Command lines that make namespaces and enter them."""

from collections.abc import Sequence
from pathlib import Path

PYTHON = "/usr/bin/python3"
# Nothing in a LAN may ever set the clock or reboot. A user namespace is the first lock, this is the second one.
_WITHOUT_DANGER = ["setpriv", "--bounding-set", "-sys_time,-sys_boot", "--inh-caps", "-sys_time,-sys_boot", "--"]
_SEARCH_PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"


def lan_command(command: Sequence[str]) -> list[str]:
    """Runs the command as first process of namespaces of its own, with all rights there and none outside."""
    made = ["--user", "--map-root-user", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
    return ["unshare", *made, "--", *_WITHOUT_DANGER, *command]


def enter_lan_command(pid: int, command: Sequence[str]) -> list[str]:
    joined = ["--user", "--preserve-credentials", "--net", "--mount", "--pid"]
    return ["nsenter", "--target", str(pid), *joined, "--", *_WITHOUT_DANGER, *command]


def enter_card_command(pid: int, command: Sequence[str]) -> list[str]:
    joined = ["--net", "--mount", "--uts", "--ipc", "--pid"]
    return ["nsenter", "--target", str(pid), *joined, "--", *command]


def only_child(pid: int) -> int | None:
    """The process that `unshare --fork` has started, as soon as there is one."""
    children = Path(f"/proc/{pid}/task/{pid}/children").read_text(encoding="ascii").split()
    return int(children[0]) if children else None


def with_system_path(path: str) -> str:
    """An ordinary user's search path may lack the directories of ip and friends."""
    return f"{path}:{_SEARCH_PATH}" if path else _SEARCH_PATH


def why_forbidden() -> str:
    """One sentence on why the kernel does not let this user make namespaces, with the cure."""
    cures = {
        "/proc/sys/kernel/unprivileged_userns_clone": ("0", "sysctl kernel.unprivileged_userns_clone=1"),
        "/proc/sys/kernel/apparmor_restrict_unprivileged_userns": (
            "1",
            "sysctl kernel.apparmor_restrict_unprivileged_userns=0",
        ),
        "/proc/sys/user/max_user_namespaces": ("0", "sysctl user.max_user_namespaces=10000"),
    }
    for path, (forbidding, cure) in cures.items():
        if Path(path).exists() and Path(path).read_text(encoding="ascii").strip() == forbidding:
            return f"this system forbids user namespaces, which the simulated card needs: run \"{cure}\" as root"
    return (
        "user namespaces do not work here, and the simulated card needs them: "
        "in a container start it with the right to make them (--privileged, or a seccomp profile that allows unshare)"
    )
