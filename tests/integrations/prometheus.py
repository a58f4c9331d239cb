# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Prometheus' own programs, each on a port of the loopback device."""

import json
import re
import subprocess
import urllib.error
import urllib.parse
import urllib.request
from collections.abc import Iterator, Mapping
from contextlib import contextmanager
from pathlib import Path
from typing import Any

from programs import ProgramError, program
from tarvelsim.waiting import wait_for

_PATIENCE = 120
_HOST = "127.0.0.1"


def promtool(*words: str, input: str = "") -> tuple[int, str]:
    """Its exit status, and all that it said."""
    ended = subprocess.run([program("promtool"), *words], input=input, capture_output=True, text=True, check=False)
    return ended.returncode, ended.stdout + ended.stderr


def get(url: str) -> str:
    with urllib.request.urlopen(url, timeout=_PATIENCE) as answer:
        text: str = answer.read().decode()
        return text


@contextmanager
def _serving(name: str, port: int, ready: str, *options: str, log: Path) -> Iterator[str]:
    """Runs it once that page of it is there, and ends it; its address."""
    url = f"http://{_HOST}:{port}"
    with log.open("w") as messages:
        running = subprocess.Popen([program(name), f"--web.listen-address={_HOST}:{port}", *options], stderr=messages)

    def answers() -> bool:
        if running.poll() is not None:
            raise ProgramError(f"{name} has ended: {log.read_text()}")
        try:
            return bool(get(f"{url}/{ready}"))
        except urllib.error.URLError:
            return False

    try:
        wait_for(answers, _PATIENCE, log.read_text)
        yield url
    finally:
        running.terminate()
        running.wait()


@contextmanager
def node_exporter(folder: Path, log: Path, port: int = 19100) -> Iterator[str]:
    """One that has nothing to tell but the files of the folder."""
    options = ("--collector.disable-defaults", "--collector.textfile", f"--collector.textfile.directory={folder}")
    with _serving("prometheus-node-exporter", port, "metrics", *options, log=log) as url:
        yield url


class Prometheus:
    def __init__(self, url: str) -> None:
        self.url = url

    def query(self, text: str) -> dict[str, float]:
        """Values by their labels, without those of the scrape."""
        answer = json.loads(get(f"{self.url}/api/v1/query?{urllib.parse.urlencode({'query': text})}"))
        if answer["status"] != "success":
            raise ProgramError(f"Prometheus refuses {text}: {answer}")
        rows: list[dict[str, Any]] = answer["data"]["result"]
        return {_named(row["metric"]): float(row["value"][1]) for row in rows}

    def rules(self) -> dict[str, str]:
        """The health of each alert rule."""
        groups = json.loads(get(f"{self.url}/api/v1/rules"))["data"]["groups"]
        return {rule["name"]: rule["health"] for group in groups for rule in group["rules"]}

    def wait_until(self, query: str, expected: Mapping[str, float], patience: float) -> None:
        wait_for(
            lambda: self.query(query) == expected,
            patience,
            lambda: f"Prometheus tells {self.query(query)} of {query} instead of {expected}",
        )

    def wait_for(self, query: str) -> dict[str, float]:
        return wait_for(lambda: self.query(query) or None, _PATIENCE, lambda: f"nothing came of {query}")


def _named(labels: dict[str, str]) -> str:
    return ",".join(f"{name}={value}" for name, value in sorted(labels.items()) if name not in {"__name__", "instance", "job"})


@contextmanager
def prometheus(target: str, rules: Path, folder: Path, port: int = 19090) -> Iterator[Prometheus]:
    """One that scrapes the target, and evaluates the rules, each second."""
    (folder / "prometheus.yml").write_text(
        "global: {scrape_interval: 1s, evaluation_interval: 1s}\n"
        f"rule_files: [{rules}]\n"
        f"scrape_configs: [{{job_name: node, static_configs: [{{targets: ['{target.removeprefix('http://')}']}}]}}]\n"
    )
    options = (f"--config.file={folder}/prometheus.yml", f"--storage.tsdb.path={folder}/data")
    with _serving("prometheus", port, "-/ready", *options, log=folder / "prometheus.log") as url:
        yield Prometheus(url)


def families(text: str) -> list[str]:
    """The names of the samples' metrics, one for each run of lines about the same."""
    names = [re.split(r"[{ ]", line, maxsplit=1)[0] for line in text.splitlines() if not line.startswith("#")]
    return [name for index, name in enumerate(names) if index == 0 or names[index - 1] != name]


def series(text: str) -> list[str]:
    return [line.rsplit(" ", 1)[0] for line in text.splitlines() if not line.startswith("#")]


