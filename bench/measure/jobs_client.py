# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the client costs: its start, many cards beside one, an archive checked and sent."""

import json
import os
import statistics
import subprocess
import tempfile
from collections.abc import Iterator
from contextlib import ExitStack, contextmanager
from pathlib import Path

import cores
import load
import messages
from archive import write_archive
from card import measured_card, servers
from effort import Effort
from paths import program
from rows import Row, compare
from samples import Ratio, Samples
from tarvelsim import Lan

_CARDS = 8


@contextmanager
def own_folders() -> Iterator[Path]:
    """The client's configuration and state are those of nobody."""
    with tempfile.TemporaryDirectory() as folder:
        for name in ("XDG_CONFIG_HOME", "XDG_STATE_HOME"):
            os.environ[name] = str(Path(folder) / name)
        yield Path(folder)


def client_rows(lan: Lan, effort: Effort) -> Iterator[Row]:
    with own_folders() as folder:
        yield from _start_rows(effort)
        yield _versions_row(lan, effort)
        archive = folder / "firmware.tar.gz"
        write_archive(archive, effort.archive_size)
        yield from _check_rows(archive, effort)
        yield _sending_row(lan, archive, effort)


def _start_rows(effort: Effort) -> Iterator[Row]:
    commands = [[program("tarvelctl"), "--version"], [program("bench_hello")]]
    client, hello = load.run_in_turn(commands, effort.client_starts, cores.WORK)
    yield from compare("client --version", {"client": client, "hello, world": hello})


def _versions_row(lan: Lan, effort: Effort) -> Row:
    with ExitStack() as stack:
        cards = [stack.enter_context(lan.card(f"card{number}")) for number in range(1, _CARDS + 1)]
        addresses = [card.address("eth0") or "" for card in cards]
        ask = [program("tarvelctl"), "versions"]
        commands = [[*ask, *addresses], *([*ask, address] for address in addresses)]
        together, *alone = load.run_in_turn(commands, effort.client_versions)
    slowest = max(alone, key=lambda samples: statistics.median(samples.times))
    return compare(f"client, versions of {_CARDS} cards", {"client": together, "the slowest alone": slowest})[0]


def _check_rows(archive: Path, effort: Effort) -> Iterator[Row]:
    """Both sides on one core, so that nothing is won by doing two things at once."""
    plain = f"gzip -dc {archive} > /dev/null; sha256sum {archive}"
    commands = [[program("tarvelctl"), "firmware", "check", str(archive)], ["sh", "-c", plain]]
    client, tools = load.run_in_turn(commands, effort.archive_rounds, cores.WORK)
    yield from compare("client, checking an archive", {"client": client, "gzip -dc, sha256sum": tools})


def _sending_row(lan: Lan, archive: Path, effort: Effort) -> Row:
    """To a receiver that stores what comes, without the checks before."""
    size = archive.stat().st_size
    sent, plain = [], []
    with measured_card(lan) as card, servers(card, ["bare daemon"]) as (receiver,):
        for _ in range(effort.archive_rounds):
            sent.append(_seconds_to_send(card.address("eth0") or "", archive))
            (samples,) = load.ask(
                "upload", messages.upload_of(size), [receiver.address], rounds=1, size=size, core=cores.OTHER
            )
            plain.append(samples.times[0])
    rates = Ratio.of([other / (one * 1e9) for one, other in zip(sent, plain, strict=True)])
    times = Samples([round(seconds * 1e9) for seconds in sent])
    return Row("client, sending an archive", "plain sender", rates, times=times, floor_times=Samples(plain))


def _seconds_to_send(address: str, archive: Path) -> float:
    command = [program("tarvelctl"), "-q", "-o", "json", "firmware", "upload", str(archive), address]
    done = subprocess.run(cores.pinned(cores.OTHER, command), capture_output=True, text=True, check=True)
    seconds: float = json.loads(done.stdout)["results"][0]["seconds"]
    return seconds
