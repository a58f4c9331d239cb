# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""A virtual card: one emulator, its disks, and what a test may want to know or do on it."""

import subprocess
import time
from collections.abc import Callable
from pathlib import Path

from serial_line import CardTimeout, SerialLine

ROOT = Path(__file__).resolve().parents[2]
ADDRESSES = {"eth0": "10.0.0.10", "eth1": "10.0.1.10"}
# The other ends of the cables, and their addresses.
CABLES = {"eth0": "tap0", "eth1": "tap1"}
HOSTS = {"eth0": "10.0.0.1", "eth1": "10.0.1.1"}


class VirtualCard:
    """Boots when made; the caller closes it. Its disks in directory make it the same card again at the next start."""

    def __init__(self, directory: Path, wait: bool = True) -> None:
        self._directory = directory
        self._power_on(wait)

    def _power_on(self, wait: bool = True) -> None:
        line = self._directory / "line.socket"
        line.unlink(missing_ok=True)
        cables = [f"tap,ifname={tap},script=no,downscript=no" for tap in CABLES.values()]
        console = ["-serial", f"file:{self._directory}/console.log", "-serial", f"unix:{line},server=on,wait=off"]
        self._emulator = subprocess.Popen(
            [str(ROOT / "scripts/vcard.d/boot"), str(self._directory / "disks"), *cables, *console],
            stdin=subprocess.DEVNULL,
        )
        try:
            self._line = SerialLine(line)
            if wait:
                self.wait_for_boot()
        except BaseException:
            self._emulator.kill()
            self._emulator.wait()
            raise

    def close(self) -> None:
        """As when the plug is pulled."""
        self._line.close()
        self._emulator.kill()
        self._emulator.wait()

    def restart(self) -> None:
        self.close()
        self._power_on()

    def wait_for_boot(self) -> None:
        self._line.wait_until_ready()
        self.wait_for(lambda: "BindToDevice (eth1) was successful" in self.log(), "tarveld listens")
        self.wait_for(lambda: self.status("kill -0 $(cat /var/run/netifd.pid)") != 0, "the network is configured")

    def run(self, command: str) -> str:
        """Output of a shell command that has to succeed on the card."""
        status, output = self._line.ask(command)
        assert status == 0, f"{command!r} on the card gives {status}: {output}"
        return output.rstrip("\n")

    def status(self, command: str) -> int:
        return self._line.ask(command)[0]

    def wait_for(self, condition: Callable[[], object], what: str, patience: float = 30.0) -> None:
        deadline = time.monotonic() + patience
        while not condition():
            if time.monotonic() > deadline:
                raise CardTimeout(f"waited in vain: {what}\n{self.log()}")
            time.sleep(0.05)

    def log(self) -> str:
        return self._line.ask("logread")[1]

    def console(self) -> str:
        """What the card has said on its first serial line since it was powered on."""
        return (self._directory / "console.log").read_text(errors="replace")

    def wait_for_log(self, text: str) -> None:
        self.wait_for(lambda: text in self.log(), f"log line {text!r}")

    def clock(self) -> int:
        return int(self.run("date +%s"))

    def uptime(self) -> float:
        return float(self.run("cat /proc/uptime").split()[0])

    def boot_id(self) -> str:
        return self.run("cat /proc/sys/kernel/random/boot_id")

    def daemon_pid(self) -> int | None:
        status, output = self._line.ask("pidof tarveld")
        return int(output) if status == 0 else None
