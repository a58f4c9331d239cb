# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The cards in Prometheus, which knows them from a file that its node_exporter reads."""

from collections.abc import Iterator, Mapping
from contextlib import contextmanager

import paths
from commands import run_shown
from narrator import say
from programs import program
from prometheus import Prometheus, node_exporter, prometheus
from sites import Site

_RULES = paths.ROOT / "packaging/prometheus/rules/tarvel.yml"
_KERNELS = 'count by (version) (tarvel_component_info{component="kernel"})'


class Monitoring:
    def __init__(self, site: Site, server: Prometheus) -> None:
        self._site = site
        self.server = server

    def poll(self) -> None:
        """What the packaged timer does each minute."""
        self._site.tarvelctl("metrics", "@site", "--output", "textfile/tarvel.prom")

    def expect_up(self, count: int) -> None:
        self._expect("count(tarvel_up == 1)", {"": count})

    def expect_kernels(self, counts: Mapping[str, int]) -> None:
        self._expect(_KERNELS, {f"version={version}": count for version, count in counts.items()})

    def _expect(self, query: str, values: Mapping[str, float]) -> None:
        """Until the server has scraped the file once more it tells what was."""
        self.server.wait_until(query, values, self._site.patience)
        run_shown([program("promtool"), "query", "instant", self.server.url, query])


@contextmanager
def monitored(site: Site) -> Iterator[Monitoring]:
    textfile = site.folder / "textfile"
    textfile.mkdir()
    say("node_exporter hands a folder of files to Prometheus, which scrapes it each second here.")
    with node_exporter(textfile, site.folder / "node_exporter.log") as exporter:
        with prometheus(exporter, _RULES, site.folder) as server:
            yield Monitoring(site, server)
