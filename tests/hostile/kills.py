# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Killed at each call of a change: after a new start the configuration is whole and requests are served.

The hardened build has then taken back what it had staged for the network, and its mark is gone.
"""

from support.daemon import IS_HARDENED
from support.peers import PATIENCE
from tarvelsim.waiting import wait_for

from .points import Point
from .target import Lost, TargetCard

_MARK = "/var/tarveld.staging"


def try_point(target: TargetCard, point: Point) -> list[str]:
    target.restore()
    target.tracer.inject(f"{point.call}:signal=KILL:when={point.number}")
    try:
        result = target.play(point.job)
    except Lost as lost:
        return [str(lost)]
    complaints = [] if result.ended else ["it was not killed"]
    _wait_for_orphans(target)
    target.start_plain()
    return complaints + _left_behind(target) + target.complaints()


def _wait_for_orphans(target: TargetCard) -> None:
    """What the daemon had just given to the shell outlives it, and may still be at work."""
    looked_for = ["pgrep", "-f", "[u]ci -q"]
    wait_for(
        lambda: target.card.inside.run(looked_for, check=False).returncode == 1,
        PATIENCE,
        lambda: "a command of the killed daemon does not end",
    )


def _left_behind(target: TargetCard) -> list[str]:
    if not IS_HARDENED:
        return []
    staged = target.card.inside.uci("changes", "network")
    found = [f"still staged: {staged}"] if staged else []
    return found + (["the mark is still there"] if target.card.inside.exists(_MARK) else [])
