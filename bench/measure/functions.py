# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Single functions, measured by Google Benchmark: the processor's time for one call."""

import json
import subprocess
from collections.abc import Iterator

import cores
from paths import program
from rows import Row


def function_rows() -> Iterator[Row]:
    command = [program("bench_functions"), "--benchmark_format=json"]
    done = subprocess.run(cores.pinned(cores.WORK, command), capture_output=True, text=True, check=True)
    for one in json.loads(done.stdout)["benchmarks"]:
        yield Row(f"function, {one['name']}", value=float(f"{one['cpu_time']:.4g}"), unit=one["time_unit"])

