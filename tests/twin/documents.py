# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Random documents: right, nearly right, and hostile."""

from random import Random

_DECLARATIONS = (
    "",
    "",
    "",
    "",
    '<?xml version="1.0"?>',
    '<?xml version="1.0" encoding="UTF-8"?>\n',
    '<?xml version="1.0" encoding="ISO-8859-1"?>',
    '<?xml version="1.0" encoding="UTF-16"?>',
    '<?xml version="1.0" encoding="nonsense"?>',
    '<?xml version="1.1" standalone="yes"?>',
    "<!-- a comment -->",
    "<?IpConfiguration processing?>",
    "<!DOCTYPE IpConfiguration>",
    '<!DOCTYPE RebootCard [<!ENTITY e "text">]>',
    '<!DOCTYPE TimeReferenceConfiguration SYSTEM "file:///etc/passwd">',
    '<!DOCTYPE x [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;"><!ENTITY c "&b;&b;&b;&b;">]>',
    "\ufeff",
    " ",
    "\n\t",
)
_SNIPPETS = (
    b"<",
    b">",
    b"/>",
    b'"',
    b"&amp;",
    b"&lt;",
    b"&#65;",
    b"&#x41;",
    b"&#10;",
    b"&#0;",
    b"&e;",
    b"&c;",
    b"<![CDATA[x]]>",
    b"<!-- x -->",
    b"<?x y?>",
    b"\0",
    b"\xff",
    b"\xc3\xa4",
    b"\xc3",
    b"\xf0\x9f\x98\x80",
    b"\xed\xa0\x80",
    b" xmlns:x='u'",
    b"x:",
    b' To="twin"',
    b"</Interface>",
    b"<Interface/>",
    b"]]>",
    b"\r\n",
)
_NAMES = ("mgmt", "a", "", "operator room 3", "k\u00e4rd", "x" * 300)
_SERVERS = ("10.0.0.1", "10.0.0.9", "ntp.example.org", "10.0.0.1", "", "a b", "fe80::1", "x" * 98, "x" * 120, "y.-_:")
_DATES = (
    "2021-03-04T05:06:07",
    "2021-3-4T5:6:7",
    "2021-03-04 05:06:07",
    "2021-02-30T00:00:00",
    "2020-13-45T99:99:99",
    "1970-01-01T00:00:00",
    "1969-12-31T23:59:59",
    "2037-12-31T23:59:60",
    "2021-03-04T05:06",
    "2021-03-04T05:06:07Z",
    " 2021- 3- 4T 5: 6: 7",
    "noon",
    "",
)
_ADDRESSES = (
    "10.0.0.11",
    "192.168.1.10",
    "255.255.255.0",
    "10.1",
    "0x0a.1",
    "0X0A.0.0.1",
    "010.1.1.1",
    "1.2.3.256",
    "10.0.0.",
    "4294967295",
    "4294967296",
    "10.0.0.1 ",
    "a.b.c.d",
    "",
)


def envelope(random: Random, host: str) -> str:
    sender = random.choice(_NAMES)
    to = host if random.random() < 0.85 else random.choice((host.upper(), "card9", "", host + " ", host[:-1]))
    pieces = [f'From="{sender}"', f'To="{to}"']
    if random.random() < 0.05:
        pieces.pop(random.randrange(2))
    if random.random() < 0.1:
        pieces.reverse()
    return " ".join(pieces)


def reboot_card(random: Random, host: str) -> bytes:
    root = random.choice(("RebootCard", "RebootCard", "RebootCard", "RebootCardNow", "IpConfiguration", "Reboot"))
    return _finished(random, f"<{root} {envelope(random, host)}/>")


def ip_request(random: Random, host: str) -> bytes:
    root = random.choice(("IpConfiguration",) * 8 + ("IpConfigurationFoo", "RebootCard", "ipConfiguration"))
    return _finished(random, f"<{root} {envelope(random, host)}/>")


def ip_change(random: Random, host: str) -> bytes:
    root = "IpConfiguration" if random.random() < 0.95 else "RebootCard"
    children = [_interface(random) for _ in range(random.choice((0, 1, 1, 2, 2, 2, 3)))]
    space = ["", "", "", "", "", "\n", " "]
    inside = "".join(random.choice(space) + child for child in children) + random.choice(space)
    return _finished(random, f"<{root} {envelope(random, host)}>{inside}</{root}>")


def _interface(random: Random) -> str:
    name = random.choice(("VemkEth1", "VemkEth2") * 4 + ("VemkEth10", "VemkEth3", "eth0", ""))
    mode = random.choice(("Static", "Static", "Static", "Dhcp", "Disabled", "Dhcpx", "Statically", "dhcp", ""))
    attributes = [f'Name="{name}"', f'Mode="{mode}"']
    for attribute, chance in (("Address", 0.9), ("Netmask", 0.9), ("Gateway", 0.5)):
        if random.random() < (chance if mode.startswith("Static") else 0.1):
            attributes.append(f'{attribute}="{random.choice(_ADDRESSES)}"')
    if random.random() < 0.05:
        attributes.pop(random.randrange(len(attributes)))
    if random.random() < 0.05:
        return f"<Interface {' '.join(attributes)}></Interface>"
    return f"<{random.choice(('Interface',) * 12 + ('InterfaceX', 'Port'))} {' '.join(attributes)}/>"


def time_reference(random: Random) -> bytes:
    element = random.choice(("TimeReferenceConfiguration",) * 10 + ("TimeReferenceConfigurationX", "TimeReference"))
    attributes = [
        f'Mode="{random.choice(("Ntp", "Ntp", "Manual", "Manual", "ntp", "NTP", ""))}"',
        f'NtpServer="{random.choice(_SERVERS)}"',
        f'DateTime="{random.choice(_DATES)}"',
    ]
    while attributes and random.random() < 0.06:
        attributes.pop(random.randrange(len(attributes)))
    random.shuffle(attributes)
    return _finished(random, f"<{element} {' '.join(attributes)}/>")


def _finished(random: Random, document: str) -> bytes:
    text = (random.choice(_DECLARATIONS) + document).encode()
    for _ in range(random.choice((0, 0, 0, 0, 0, 0, 1, 1, 2, 5))):
        text = _spoiled(random, text)
    return text


def _spoiled(random: Random, text: bytes) -> bytes:
    place = random.randrange(len(text) + 1)
    kind = random.randrange(5)
    if kind == 0:
        return text[:place]
    if kind == 1:
        return text[:place] + bytes([random.randrange(256)]) + text[place + 1 :]
    if kind == 2:
        return text[:place] + text[place + random.randrange(1, 9) :]
    if kind == 3:
        return text[:place] + text[place : place + random.randrange(1, 40)] + text[place:]
    return text[:place] + random.choice(_SNIPPETS) + text[place:]
