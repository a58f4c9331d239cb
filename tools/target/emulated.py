# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""pytest plugin for runs with the daemon under an emulator: names each test that is skipped, with its reason."""

from _pytest.terminal import TerminalReporter


def pytest_terminal_summary(terminalreporter: TerminalReporter) -> None:
    for report in terminalreporter.stats.get("skipped", []):
        _, _, reason = report.longrepr
        terminalreporter.write_line(f"not under the emulator: {report.nodeid.partition('system/')[2]}: {reason}")
