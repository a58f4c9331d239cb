# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The XML texts of requests; nothing is escaped, so that a test can write what it likes."""


def attributes(**values: str | None) -> str:
    """Each with a blank in front; one that is None is left out."""
    return "".join(f' {name}="{value}"' for name, value in values.items() if value is not None)


def envelope(root: str, content: str = "", *, to: str | None = "card1", sender: str | None = "mgmt") -> str:
    opening = f"<{root}{attributes(From=sender, To=to)}"
    return f"{opening}>{content}</{root}>" if content else f"{opening}/>"


def interface(
    name: str | None,
    mode: str | None,
    address: str | None = None,
    netmask: str | None = None,
    gateway: str | None = None,
) -> str:
    return f"<Interface{attributes(Name=name, Mode=mode, Address=address, Netmask=netmask, Gateway=gateway)}/>"


def ip_configuration(*interfaces: str, to: str | None = "card1", sender: str | None = "mgmt") -> str:
    return envelope("IpConfiguration", "".join(interfaces), to=to, sender=sender)


def reboot_card(to: str | None = "card1", sender: str | None = "mgmt") -> str:
    return envelope("RebootCard", to=to, sender=sender)


def time_reference(
    mode: str | None = "Ntp",
    server: str | None = "10.0.0.1",
    date_time: str | None = "2021-03-04T05:06:07",
    element: str = "TimeReferenceConfiguration",
) -> str:
    return f"<{element}{attributes(Mode=mode, NtpServer=server, DateTime=date_time)}/>"
