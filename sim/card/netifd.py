# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The platform's network daemon: a process that puts the configuration on the devices, and asks for leases ever after.

Once the devices are as configured it leaves word in the card's directory, and when nothing is left to do it becomes a
program that only sleeps: many cards on one machine would otherwise be many times this interpreter.
"""

import contextlib
import fcntl
import json
import os
import signal
import time
import traceback

import delays
import network
from interfaces import Interface
from settings import DIRECTORY, Settings

# Holds the process group; it is locked for as long as any process of the group lives.
_PID_FILE = "/run/netifd.pid"
_STATE = DIRECTORY / "interfaces"
_COMPLAINTS = DIRECTORY / "netifd.log"
_HELD = DIRECTORY / "control/hold/netifd"
_NO_DHCP_SERVER = DIRECTORY / "control/fail/dhcp"
_NAP = 0.002
_MANY_DESCRIPTORS = 256


def start(settings: Settings) -> None:
    """Returns at once, before the devices have their addresses. Nothing happens if it runs already."""
    lock = os.open(_PID_FILE, os.O_RDWR | os.O_CREAT, 0o644)
    if _try_to_lock(lock):
        os.ftruncate(lock, 0)
        if os.fork() == 0:
            _live_apart(settings, lock)
    os.close(lock)


def end() -> None:
    """Nothing more happens to the devices: a command that the process has started ends with it."""
    lock = os.open(_PID_FILE, os.O_RDWR | os.O_CREAT, 0o644)
    while not _try_to_lock(lock):  # by a process that, if it begins just now, has not yet said who it is
        pid = os.pread(lock, 32, 0)
        if pid:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(int(pid), signal.SIGKILL)
        time.sleep(_NAP)
    os.close(lock)


def wait_until_configured(since: int) -> None:
    while times_configured() == since:
        if not _is_running():
            raise SystemExit(f"card: the network daemon has ended: {_COMPLAINTS.read_text()}")
        time.sleep(_NAP)


def _is_running() -> bool:
    lock = os.open(_PID_FILE, os.O_RDWR | os.O_CREAT, 0o644)
    is_free = _try_to_lock(lock)
    os.close(lock)
    return not is_free


def _try_to_lock(file: int) -> bool:
    try:
        fcntl.flock(file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        return True
    except BlockingIOError:
        return False


def times_configured() -> int:
    times: int = json.loads(_STATE.read_text())["configured"] if _STATE.exists() else 0
    return times


def _live_apart(settings: Settings, lock: int) -> None:
    """Nothing of the caller's is kept: neither its terminal nor its files, nor what it does on signals."""
    try:
        os.setpgid(0, 0)
        os.pwrite(lock, b"%d\n" % os.getpid(), 0)
        os.chdir("/")
        for number in (signal.SIGTERM, signal.SIGCHLD):
            signal.signal(number, signal.SIG_DFL)
        nowhere = os.open("/dev/null", os.O_RDWR)
        complaints = os.open(_COMPLAINTS, os.O_WRONLY | os.O_CREAT | os.O_APPEND, 0o644)
        for descriptor, file in enumerate((nowhere, nowhere, complaints)):
            os.dup2(file, descriptor)
        os.closerange(3, lock)
        os.closerange(lock + 1, _MANY_DESCRIPTORS)
        os.set_inheritable(lock, True)
        _live(settings)
    except BaseException:
        traceback.print_exc()
    finally:
        os._exit(1)


def _live(settings: Settings) -> None:
    delays.pause(settings, delays.NETWORK_SETUP)
    while _HELD.exists():
        time.sleep(_NAP)
    interfaces = network.configured(settings)
    commands = ["link set lo up"]
    for interface in interfaces:
        commands += network.bring_up(interface, settings)
    network.run_ip(commands)
    _leave_word(interfaces)
    _ask_for_leases(settings, [interface for interface in interfaces if interface.proto == "dhcp"])
    os.execvp("sleep", ["netifd", "infinity"])


def _leave_word(interfaces: list[Interface]) -> None:
    word = {"configured": times_configured() + 1, "errors": {each.section: each.errors for each in interfaces}}
    new = _STATE.with_suffix(".new")
    new.write_text(json.dumps(word) + "\n")
    # Others read it at any time, and must not find a half of it.
    new.rename(_STATE)


def _ask_for_leases(settings: Settings, interfaces: list[Interface]) -> None:
    """Goes on asking for as long as no server answers."""
    while interfaces:
        delays.pause(settings, delays.LEASE)
        if not _NO_DHCP_SERVER.exists():
            for interface in interfaces:
                lease = settings.addresses[interface.device]
                interface.addresses, interface.gateway = [f"{lease['lease']}/{lease['prefix']}"], lease["router"]
                network.run_ip(network.bring_up(interface, settings))
            interfaces = []
