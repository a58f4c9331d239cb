# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Everything that can go wrong with the simulation itself."""


class SimError(Exception):
    """Base of all of them; the text is for people."""


class NotInLan(SimError):
    """This process does not run in a simulated LAN."""


class WaitTimeout(SimError):
    """Something waited for did not happen in time."""


class CommandFailed(SimError):
    """A command run in a card ended with another status than 0."""
