# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How firmware is sent to a card."""

from wire import Command, Header, Sections

from .daemon import IS_HARDENED
from .peers import TcpPeer

UNPACK = "tar -xzvf firmware.tar.gz -C /tmp/upgrade"
_LISTINGS = ["tar -tzf firmware.tar.gz", "tar -tvzf firmware.tar.gz"]

# What the hardened build runs besides: before an archive is stored, before it is unpacked, and before it is installed.
RENEW = ["rm -rf /tmp/upgrade && mkdir -m 700 /tmp/upgrade"] if IS_HARDENED else []
LISTINGS = _LISTINGS if IS_HARDENED else []
LOOKS_THROUGH = [f"{{ {tar} 2>/dev/null && echo; }} | head -c 1048577" for tar in LISTINGS]
LOOKS_FOR_KEYS = (
    ["{ test ! -e /etc/tarveld/keys || ls /etc/tarveld/keys; } 2>/dev/null && echo /"] if IS_HARDENED else []
)


def send_upload(tcp: TcpPeer, data: bytes, command: Command) -> None:
    payload = Sections(data=data).encode()
    tcp.send(Header(command=command, message_format=1, payload_length=len(payload)).encode() + payload)
