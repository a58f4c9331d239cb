# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""sim/lan /usr/bin/python3 tests/twin [--messages N] [--seed S] [--session N]

Plays the cases of cases.py and random sessions to the model and to the daemon on a simulated card (TARVELD, as for the system tests), prints each
difference and, as the last line, what was played. Ends with 1 if there was a difference.
"""

import argparse
import os
import shlex
import sys
from pathlib import Path

_ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(_ROOT / "tests"), str(_ROOT / "tests/system"), str(_ROOT / "sim")]

import tarvelsim  # noqa: E402
from support.daemon import COMMAND, IS_EMULATED  # noqa: E402
from twin.cases import HOST  # noqa: E402
from twin.rig import Rig  # noqa: E402
from twin.run import Twin  # noqa: E402



def _arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--messages", type=int, default=2000, help="how many at least (2000)")
    parser.add_argument("--seed", type=int, default=1, help="the number of the first session (1)")
    parser.add_argument("--session", type=int, help="only this one")
    return parser.parse_args()


def main() -> int:
    arguments = _arguments()
    os.environ["TARVELD"] = shlex.join(COMMAND)
    lan = tarvelsim.Lan.current()
    with lan.card(HOST, command=COMMAND) as card:
        twin = Twin(Rig(lan, card), emulated=IS_EMULATED)
        twin.play_cases()
        if arguments.session is not None:
            twin.play_session(arguments.session)
        else:
            twin.play(arguments.seed, arguments.messages)
    tally = twin.tally
    print(
        f"twin: {tally.messages} messages in {tally.sessions} sessions from {arguments.seed}, "
        f"{tally.left_out} actions left to the shell, {tally.differences} differences"
    )
    return 1 if tally.differences else 0


if __name__ == "__main__":
    sys.exit(main())
