# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What the clients of the tests ask to know where a sequence of events ends."""

from support.peers import next_unknown_command
from wire import Command, reply_to


def test_questions_never_look_like_replies_however_many_are_asked() -> None:
    asked = [next_unknown_command() for _ in range(20_000)]
    assert all(command != reply_to(command) for command in asked)
    assert not {*asked} & {*Command}
