# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Killed at each call of a change: after a new start the configuration is whole and requests are served."""

from .points import Point
from .target import Lost, TargetCard


def try_point(target: TargetCard, point: Point) -> list[str]:
    target.restore()
    target.tracer.inject(f"{point.call}:signal=KILL:when={point.number}")
    try:
        result = target.play(point.job)
    except Lost as lost:
        return [str(lost)]
    complaints = [] if result.ended else ["it was not killed"]
    target.start_plain()
    return complaints + target.complaints()
