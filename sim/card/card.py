# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The card as a whole: boots, serves orders, heals the daemon, reboots."""

import os
import selectors
import signal
import time
from collections.abc import Callable
from pathlib import Path

import daemon
import delays
import factory
import filesystem
import netifd
import network
import programs
from apart import run_apart
from control import Control, Order
from ring import Ring
from settings import DIRECTORY, Settings
from standstill import Standstill
from systemlog import SystemLog

_NO_PATIENCE = 0.5  # seconds


class Card:
    def __init__(self, settings: Settings) -> None:
        self._settings = settings
        self._ring = Ring(DIRECTORY / "ring", DIRECTORY / "console")
        self._log = SystemLog(DIRECTORY / "log", self._ring)
        self._control = Control(DIRECTORY / "control.socket")
        self._daemon = daemon.Daemon(settings.command, settings.environment, DIRECTORY / "console")
        self._is_supervised = settings.supervised
        self._standstill = Standstill(self._daemon, settings.standstill)
        self._respawn_at: float | None = None
        self._boots = 0
        self._reboot_wanted = False
        self._orders: dict[str, Callable[[Order], Order]] = {
            "state": self._state,
            "logread": self._logread,
            "start": self._start,
            "stop": self._stop,
            "kill": self._kill,
            "supervise": self._supervise,
            "reset": self._reset,
        }

    def first_boot(self) -> None:
        run_apart(self._make_new)
        self._boot(with_extra_files=True)

    def _make_new(self) -> None:
        programs.install(self._settings.programs)
        factory.restore(self._settings)

    def run(self) -> None:
        """The life of the card; ends with its process."""
        selector = selectors.DefaultSelector()
        wakeup, signalled = os.pipe2(os.O_NONBLOCK | os.O_CLOEXEC)
        # What wakes the loop is the byte that Python writes for each signal; the handlers only have to be there.
        signal.set_wakeup_fd(signalled, warn_on_full_buffer=False)
        signal.signal(signal.SIGCHLD, lambda *_: None)
        signal.signal(signal.SIGTERM, self._want_reboot)
        selector.register(self._control.socket, selectors.EVENT_READ)
        selector.register(wakeup, selectors.EVENT_READ)
        self._reap()
        while True:
            for key, _ in selector.select(self._time_until_due()):
                if key.fd == wakeup:
                    os.read(wakeup, 512)
                    self._reap()
                else:
                    self._control.serve_one(self._execute)
            self._do_what_is_due()

    def _want_reboot(self, *_: object) -> None:
        self._reboot_wanted = True

    def _execute(self, order: Order) -> Order:
        return self._orders[order["do"]](order)

    def _do_what_is_due(self) -> None:
        if self._reboot_wanted:
            self._reboot()
        if self._respawn_at is not None and time.monotonic() >= self._respawn_at:
            self._respawn_at = None
            self._daemon.start()
        self._standstill.turn()

    def _time_until_due(self) -> float | None:
        respawn = None if self._respawn_at is None else max(0.0, self._respawn_at - time.monotonic())
        return min((left for left in (respawn, self._standstill.time_left()) if left is not None), default=None)

    def _reap(self) -> None:
        try:
            while (ended := os.waitpid(-1, os.WNOHANG))[0] != 0:
                if self._daemon.note_exit(*ended) and self._is_supervised:
                    self._respawn_at = time.monotonic() + delays.of_this_card(self._settings, delays.RESPAWN)
        except ChildProcessError:
            pass  # nobody is left to wait for

    # Booting

    def _boot(self, with_extra_files: bool = False) -> None:
        run_apart(self._write_boot_files, with_extra_files)
        self._reboot_wanted = False  # who asked while the card went down has what he wanted
        self._log.start()
        run_apart(self._start_network)
        self._boots += 1
        self._log.note(f"booted ({self._boots})")
        if self._settings.autostart:
            self._daemon.start()
        run_apart(programs.run_start_links)

    def _write_boot_files(self, with_extra_files: bool) -> None:
        factory.make_boot_files()
        if with_extra_files:
            factory.write_extra_files(self._settings)

    def _start_network(self) -> None:
        configured = netifd.times_configured()
        netifd.start(self._settings)
        netifd.wait_until_configured(since=configured)

    def _shut_down(self) -> None:
        self._respawn_at = None
        self._stop_daemon()
        netifd.end()
        daemon.end_all_others(self._settings)
        network.take_down(self._settings)
        filesystem.empty_volatile()

    def _stop_daemon(self, patience: float = daemon.PATIENCE) -> None:
        self._standstill.wake()  # it would not hear that it is to end
        self._daemon.stop(patience)

    def _run_stop_scripts(self) -> None:
        stops: dict[str, Callable[[], None]] = {
            "K10tarveld": self._stop_daemon,
            "K65ntpd": lambda: programs.run_init_script("ntpd", "stop"),
            "K89log": self._log.stop,
            "K90network": lambda: programs.run_init_script("network", "stop"),
        }
        self._respawn_at = None
        for link, stop in stops.items():
            if link != "K65ntpd" or Path("/etc/rc.d", link).exists():
                self._log.note(f"{link} stop")
                stop()

    def _reboot(self) -> None:
        self._reboot_wanted = False
        self._log.note("rebooting")
        delays.pause(self._settings, delays.SHUTDOWN)
        self._run_stop_scripts()
        self._shut_down()
        self._ring.clear()
        time.sleep(self._settings.reboot_time)
        self._boot()

    # Orders

    def _state(self, _: Order) -> Order:
        exits = [end.to_json() for end in self._daemon.exits]
        return {"pid": self._daemon.pid, "exits": exits, "boots": self._boots}

    def _logread(self, _: Order) -> Order:
        self._ring.publish()
        return {}

    def _start(self, order: Order) -> Order:
        self._respawn_at = None
        if order.get("command") is not None:
            self._daemon.command = order["command"]
        if order.get("environment") is not None:
            self._daemon.environment = order["environment"]
        self._daemon.start()
        return self._state(order)

    def _stop(self, order: Order) -> Order:
        self._respawn_at = None
        self._stop_daemon()
        return self._state(order)

    def _kill(self, order: Order) -> Order:
        self._daemon.signal(order["signal"])
        return {}

    def _supervise(self, order: Order) -> Order:
        self._is_supervised = order["on"]
        if not self._is_supervised:
            self._respawn_at = None
        return {}

    def _reset(self, order: Order) -> Order:
        """A card as new, without the time that making one takes."""
        self._stop_daemon(patience=_NO_PATIENCE)
        self._shut_down()
        for name in ("commands", "calls", "delays", "console", "log"):
            (DIRECTORY / name).write_bytes(b"")
        self._ring.clear()
        for name in ("fail", "hold"):
            filesystem.clear(str(DIRECTORY / "control" / name))
        self._daemon.command = self._settings.command
        self._daemon.environment = self._settings.environment
        self._daemon.exits = []
        self._is_supervised = self._settings.supervised
        self._boots = 0
        self.first_boot()
        return self._state(order)
