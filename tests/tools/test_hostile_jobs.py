# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the tests of failures and kills ask of the card."""

from hostile.jobs import JOBS, others
from wire import golden, reply_to, request

_NEW = 0x7123


def test_command_without_a_job_is_asked_as_in_its_example() -> None:
    shown = golden.Exchange("uptime", request(_NEW), request(reply_to(_NEW)))
    assert [(job.name, job.data) for job in others(JOBS, [*golden.EVERY, shown])] == [("uptime", request(_NEW))]


def test_each_command_of_the_page_has_a_job() -> None:
    assert set(golden.BY_NUMBER) <= {job.command for job in JOBS}
