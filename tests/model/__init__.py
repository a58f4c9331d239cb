# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The daemon once more, as a model: what it answers, logs, runs and leaves behind, for any bytes that reach it.

Shares nothing with src/ and was made without looking at it, so that a mistake in one cannot agree with the other. What
is no code of the daemon's is the real thing here, too: libxml2 reads the documents and tar unpacks the archives.
"""

from .card import Card, Fault, Refusal
from .platform import Unforeseeable
from .tcp import serve_connection
from .udp import Reply, UdpPort

__all__ = ["Card", "Fault", "Refusal", "Reply", "UdpPort", "Unforeseeable", "serve_connection"]
