# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Writes down how each task ended on each host, as a line of JSON."""

import json
import os
from typing import Any

from ansible.plugins.callback import CallbackBase  # type: ignore[import]

DOCUMENTATION = """
name: record
type: aggregate
short_description: Write the results of tasks into the file RECORD_TO
description: For tests.
"""


class CallbackModule(CallbackBase):  # type: ignore[misc]
    CALLBACK_VERSION = 2.0
    CALLBACK_TYPE = "aggregate"
    CALLBACK_NAME = "record"
    CALLBACK_NEEDS_ENABLED = True

    def v2_runner_on_ok(self, result: Any) -> None:
        self._record("ok", result)

    def v2_runner_on_failed(self, result: Any, ignore_errors: bool = False) -> None:
        self._record("failed", result)

    def v2_runner_on_unreachable(self, result: Any) -> None:
        self._record("unreachable", result)

    def v2_runner_retry(self, result: Any) -> None:
        self._record("retried", result)

    def _record(self, outcome: str, result: Any) -> None:
        played = {
            "task": result.task_name,
            "host": result._host.get_name(),
            "outcome": outcome,
            "result": result._result,
        }
        with open(os.environ["RECORD_TO"], "a", encoding="utf-8") as file:
            file.write(json.dumps(played) + "\n")
